#include "review/ToviLabelAttribute.h"

const QString ToviLabelAttribute::UndefinedName_ = QStringLiteral("_未定義_");

QColor ToviLabelAttribute::ColorFromValue(quint32 bgr) {
    return QColor(static_cast<int>(bgr & 0xFF), static_cast<int>((bgr >> 8) & 0xFF),
                  static_cast<int>((bgr >> 16) & 0xFF));
}

quint32 ToviLabelAttribute::ValueFromColor(const QColor& color) {
    if (!color.isValid()) {
        return 0;
    }
    const QColor rgb = color.toRgb();
    return static_cast<quint32>(rgb.red()) | (static_cast<quint32>(rgb.green()) << 8) |
           (static_cast<quint32>(rgb.blue()) << 16);
}

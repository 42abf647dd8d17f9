#pragma once

#include <QColor>
#include <QString>

// One label slot's appearance: the name the inspector sees and the colour of the label.
// Colours are kept as the 0x00BBGGRR values the profile and the slot table use (red in the
// low byte) and handed out as QColor.
class ToviLabelAttribute {
public:
    static const QString UndefinedName_;  // "_未定義_"
    static constexpr quint32 DefaultColor_ = 0x808080;

    ToviLabelAttribute() = default;
    ToviLabelAttribute(quint32 color, const QString& name) : name(name), color(color) {}
    ToviLabelAttribute(const ToviLabelAttribute&) = default;
    ToviLabelAttribute& operator=(const ToviLabelAttribute&) = default;
    virtual ~ToviLabelAttribute() = default;

    // A single slot keeps nothing of its own in the profile; the manager saves the names.
    virtual void Save(const QString& ignored = QString()) { Q_UNUSED(ignored) }
    virtual void Load(const QString& ignored = QString()) { Q_UNUSED(ignored) }

    QString GetName() const { return name; }
    void SetName(const QString& text) { name = text; }
    QColor GetColor() const { return ColorFromValue(color); }
    void SetColor(const QColor& value) { color = ValueFromColor(value); }
    // The colour as 0x00BBGGRR.
    quint32 GetColorValue() const { return color; }
    void SetColorValue(quint32 value) { color = value; }

    static QColor ColorFromValue(quint32 bgr);
    // An invalid colour gives 0.
    static quint32 ValueFromColor(const QColor& color);

    bool operator==(const ToviLabelAttribute& other) const {
        return name == other.name && color == other.color;
    }

private:
    // The literal rather than UndefinedName_: a slot may be built before that is.
    QString name = QStringLiteral("_未定義_");
    quint32 color = DefaultColor_;
};

#include "tests/support/FixturePainter.h"

#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QPolygonF>

#include <algorithm>

namespace {

const QString kFontFamily = QStringLiteral("IPAGothic");

QFont FontOfHeight(double pixels) {
    QFont font(kFontFamily);
    font.setPixelSize(std::max(6, static_cast<int>(pixels)));
    return font;
}

// In [0, 1): the delivery writer's generator, kept local so the painter stands alone.
double RandomUnit(quint64& state) {
    quint64 z = (state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return static_cast<double>((z ^ (z >> 31)) >> 11) * (1.0 / 9007199254740992.0);
}

void DrawCone(QPainter& p, QPointF base, double h) {
    const double w = h * 0.55;
    QPolygonF cone{
        {base.x() - w / 2, base.y()}, {base.x() + w / 2, base.y()}, {base.x(), base.y() - h}};
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(235, 110, 20));
    p.drawPolygon(cone);
    p.setBrush(Qt::white);
    p.drawRect(QRectF(base.x() - w * 0.28, base.y() - h * 0.55, w * 0.56, h * 0.14));
    p.setBrush(QColor(60, 60, 60));
    p.drawRect(QRectF(base.x() - w * 0.65, base.y() - h * 0.06, w * 1.3, h * 0.06));
}

void DrawStructure(QPainter& p, FixtureScene scene, const QRectF& area) {
    const double w = area.width();
    const double h = area.height();
    const auto at = [&](double x, double y) { return area.topLeft() + QPointF(w * x, h * y); };
    p.setPen(QPen(QColor(90, 90, 90), std::max(1.0, w * 0.004)));
    switch (scene) {
        case FixtureScene::Wall:
            p.setBrush(QColor(185, 185, 180));
            p.drawPolygon(QPolygonF{at(0.15, 1), at(0.25, 0.15), at(0.85, 0.15), at(0.95, 1)});
            for (int k = 1; k < 5; ++k) {
                p.drawLine(at(0.25 + 0.12 * k, 0.15), at(0.25 + 0.12 * k, 1));
            }
            break;
        case FixtureScene::Earth:
            p.setBrush(QColor(140, 105, 60));
            p.drawPolygon(QPolygonF{at(0, 1), at(0.3, 0.35), at(0.6, 0.3), at(1, 1)});
            // an excavator in flat yellow
            p.setBrush(QColor(240, 190, 30));
            p.drawRect(QRectF(at(0.62, 0.45), QSizeF(w * 0.22, h * 0.25)));
            p.drawLine(at(0.62, 0.5), at(0.45, 0.3));
            p.drawLine(at(0.45, 0.3), at(0.4, 0.6));
            p.setBrush(QColor(50, 50, 50));
            p.drawRect(QRectF(at(0.6, 0.7), QSizeF(w * 0.26, h * 0.1)));
            break;
        case FixtureScene::Box: {
            p.setBrush(QColor(175, 175, 170));
            const QRectF outer(at(0.2, 0.35), QSizeF(w * 0.6, h * 0.6));
            p.drawRect(outer);
            p.setBrush(QColor(50, 50, 55));
            p.drawRect(outer.adjusted(w * 0.08, h * 0.1, -w * 0.08, -h * 0.1));
            break;
        }
        case FixtureScene::Layers: {
            const QColor layers[] = {{40, 40, 45}, {120, 115, 105}, {165, 150, 120}};
            for (int k = 0; k < 3; ++k) {
                p.setBrush(layers[k]);
                p.drawRect(QRectF(at(0, 0.55 + 0.15 * k), QSizeF(w, h * 0.15)));
            }
            p.setPen(QPen(Qt::white, std::max(2.0, w * 0.01), Qt::DashLine));
            p.drawLine(at(0, 0.6), at(1, 0.6));
            break;
        }
        case FixtureScene::Rail:
            p.setBrush(QColor(200, 200, 205));
            for (int k = 0; k < 6; ++k) {
                p.drawRect(QRectF(at(0.05 + 0.17 * k, 0.45), QSizeF(w * 0.02, h * 0.5)));
            }
            p.setBrush(QColor(235, 235, 240));
            p.drawRect(QRectF(at(0, 0.45), QSizeF(w, h * 0.12)));
            break;
        case FixtureScene::Slope:
            p.setBrush(QColor(170, 170, 160));
            p.drawPolygon(QPolygonF{at(0, 1), at(0.45, 0.2), at(1, 0.2), at(1, 1)});
            for (int row = 1; row < 6; ++row) {
                const double y = 0.2 + 0.8 * row / 6.0;
                const double x0 = w * 0.45 * (1.0 - row / 6.0);
                p.drawLine(area.topLeft() + QPointF(x0, h * y), at(1, y));
            }
            break;
    }
}

// Chalk writing shrinks to fit its cell, down to two thirds, and is cut off beyond that.
void FittedText(QPainter& p, const QRectF& cell, const QString& text, double pixels) {
    QFont font = FontOfHeight(pixels);
    for (double size = pixels; size >= pixels * 0.66; size -= 1.0) {
        font = FontOfHeight(size);
        if (QFontMetricsF(font).horizontalAdvance(text) <= cell.width()) {
            break;
        }
    }
    p.setFont(font);
    p.drawText(cell, Qt::AlignVCenter | Qt::AlignLeft,
               QFontMetricsF(font).elidedText(text, Qt::ElideRight, cell.width()));
}

void DrawBoard(QPainter& p, const BoardContent& b, const QRectF& rect) {
    const double frame = std::max(2.0, rect.width() * 0.025);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(125, 85, 45));
    p.drawRect(rect);
    const QRectF board = rect.adjusted(frame, frame, -frame, -frame);
    p.setBrush(QColor(28, 72, 48));
    p.drawRect(board);

    const QList<QPair<QString, QString>> rows = {
        {QStringLiteral("工事名"), b.workName},
        {QStringLiteral("工種"), b.kousyu},
        {QStringLiteral("種別"), b.syubetsu},
        {QStringLiteral("撮影箇所"), b.place},
        {QStringLiteral("内容"), b.title},
        {QStringLiteral("日付"),
         b.date.isValid() ? b.date.toString(QStringLiteral("yyyy年M月d日")) : QString()},
    };
    const double rowHeight = board.height() / rows.size();
    const double labelWidth = board.width() * 0.27;
    const QColor chalk(238, 238, 228);
    p.setPen(QPen(chalk, std::max(1.0, rowHeight * 0.04)));
    for (int r = 1; r < rows.size(); ++r) {
        const double y = board.top() + rowHeight * r;
        p.drawLine(QPointF(board.left(), y), QPointF(board.right(), y));
    }
    p.drawLine(QPointF(board.left() + labelWidth, board.top()),
               QPointF(board.left() + labelWidth, board.bottom()));
    const double pad = rowHeight * 0.15;
    for (int r = 0; r < rows.size(); ++r) {
        const double y = board.top() + rowHeight * r;
        const QRectF label(board.left() + pad, y, labelWidth - 2 * pad, rowHeight);
        const QRectF value(board.left() + labelWidth + pad, y, board.width() - labelWidth - 2 * pad,
                           rowHeight);
        FittedText(p, label, rows[r].first, rowHeight * 0.5);
        FittedText(p, value, rows[r].second, rowHeight * 0.5);
    }
}

// A dimension line from a to b with its text beside the middle.
void Dimension(QPainter& p, QPointF a, QPointF b, const QString& text, QPointF textOffset) {
    p.drawLine(a, b);
    const QPointF d = b - a;
    const double len = std::hypot(d.x(), d.y());
    if (len > 0) {
        const QPointF n(-d.y() / len * 5, d.x() / len * 5);
        p.drawLine(a - n, a + n);
        p.drawLine(b - n, b + n);
    }
    const QPointF mid = (a + b) / 2 + textOffset;
    p.drawText(QRectF(mid.x() - 60, mid.y() - 12, 120, 24), Qt::AlignCenter, text);
}

}  // namespace

QImage DrawSitePhoto(const BoardContent& board, QSize size) {
    QImage image(size, QImage::Format_RGB32);
    // Sky first over the whole picture: antialiased edges blend with what lies beneath.
    image.fill(QColor(165, 200, 232));
    const double w = size.width();
    const double h = size.height();
    quint64 state = board.seed;
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::TextAntialiasing);

    const double horizon = h * (0.38 + RandomUnit(state) * 0.08);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(70, 115, 70));
    QPolygonF hills{{0, horizon},
                    {0, horizon - h * 0.08},
                    {w * 0.3, horizon - h * 0.14},
                    {w * 0.6, horizon - h * 0.06},
                    {w, horizon - h * 0.12},
                    {w, horizon}};
    p.drawPolygon(hills);
    p.fillRect(QRectF(0, horizon, w, h - horizon),
               board.river ? QColor(115, 150, 80) : QColor(155, 135, 100));
    if (board.river) {
        p.fillRect(QRectF(0, horizon + h * 0.03, w, h * 0.07), QColor(70, 120, 170));
    } else {
        p.setBrush(QColor(85, 85, 90));
        QPolygonF road{
            {w * 0.45, horizon}, {w * 0.55, horizon}, {w, h * 0.75}, {w * 0.6, h * 0.75}};
        p.drawPolygon(road);
    }

    const bool boardLeft = RandomUnit(state) < 0.7;
    const QRectF structure(boardLeft ? w * 0.42 : w * 0.05, horizon - h * 0.05, w * 0.53, h * 0.5);
    DrawStructure(p, board.scene, structure);
    const int cones = 1 + static_cast<int>(RandomUnit(state) * 2.0);
    for (int k = 0; k < cones; ++k) {
        const double x = boardLeft ? w * (0.6 + 0.15 * k) : w * (0.1 + 0.15 * k);
        DrawCone(p, QPointF(x, h * 0.93), h * 0.12);
    }

    const QRectF rect(boardLeft ? w * 0.03 : w * 0.51, h * 0.5, w * 0.46, h * 0.46);
    DrawBoard(p, board, rect);
    return image;
}

QImage DrawReferenceDrawing(FixtureScene scene, const QString& title, QSize size) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    const double w = size.width();
    const double h = size.height();
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(QPen(Qt::black, std::max(1.0, w / 400.0)));
    p.setBrush(Qt::NoBrush);
    p.setFont(FontOfHeight(h * 0.035));
    p.drawRect(QRectF(w * 0.02, h * 0.02, w * 0.96, h * 0.96));

    const QRectF area(w * 0.15, h * 0.12, w * 0.6, h * 0.58);
    const double aw = area.width();
    const double ah = area.height();
    const auto at = [&](double x, double y) { return area.topLeft() + QPointF(aw * x, ah * y); };
    const QPen thin(Qt::black, 1);
    switch (scene) {
        case FixtureScene::Box: {
            const QRectF outer(at(0.15, 0.2), QSizeF(aw * 0.7, ah * 0.7));
            p.drawRect(outer);
            p.drawRect(outer.adjusted(aw * 0.1, ah * 0.1, -aw * 0.1, -ah * 0.1));
            p.setPen(thin);
            Dimension(p, outer.bottomLeft() + QPointF(0, 15), outer.bottomRight() + QPointF(0, 15),
                      "2400", {0, 14});
            Dimension(p, outer.topRight() + QPointF(15, 0), outer.bottomRight() + QPointF(15, 0),
                      "2000", {40, 0});
            break;
        }
        case FixtureScene::Wall:
        case FixtureScene::Rail:
            p.drawPolygon(QPolygonF{at(0.3, 0.1), at(0.45, 0.1), at(0.55, 0.8), at(0.9, 0.8),
                                    at(0.9, 1), at(0.1, 1), at(0.1, 0.8), at(0.3, 0.8)});
            p.setPen(thin);
            Dimension(p, at(0.3, 0.1) - QPointF(0, 15), at(0.45, 0.1) - QPointF(0, 15), "300",
                      {0, -14});
            Dimension(p, at(0.05, 0.1), at(0.05, 1), "1500", {-40, 0});
            Dimension(p, at(0.1, 1) + QPointF(0, 15), at(0.9, 1) + QPointF(0, 15), "1800", {0, 14});
            break;
        case FixtureScene::Earth:
        case FixtureScene::Slope:
            p.drawLine(at(0, 0.2), at(0.3, 0.2));
            p.drawLine(at(0.3, 0.2), at(0.75, 1));
            p.drawLine(at(0.75, 1), at(1, 1));
            for (int k = 1; k < 6 && scene == FixtureScene::Slope; ++k) {
                const double t = k / 6.0;
                const QPointF on = at(0.3 + 0.45 * t, 0.2 + 0.8 * t);
                p.drawLine(on, on + QPointF(-aw * 0.06, ah * 0.04));
            }
            p.setPen(thin);
            p.drawText(QRectF(at(0.55, 0.45), QSizeF(aw * 0.3, 24)), Qt::AlignLeft,
                       scene == FixtureScene::Slope ? "1:0.5" : "1:1.5");
            Dimension(p, at(0.95, 0.2), at(0.95, 1), "3000", {-40, 0});
            break;
        case FixtureScene::Layers: {
            const double thickness[] = {0.15, 0.3, 0.4};
            const char* labels[] = {"t=50", "t=150", "t=200"};
            double y = area.top() + ah * 0.1;
            for (int k = 0; k < 3; ++k) {
                const QRectF layer(area.left(), y, aw, ah * thickness[k]);
                p.drawRect(layer);
                p.drawText(layer.adjusted(aw + 10, 0, aw + 120, 0),
                           Qt::AlignVCenter | Qt::AlignLeft, QString::fromLatin1(labels[k]));
                y += ah * thickness[k];
            }
            p.setPen(thin);
            Dimension(p, at(0, 0.1) - QPointF(0, 15), at(1, 0.1) - QPointF(0, 15), "W=3500",
                      {0, -14});
            break;
        }
    }

    // The title block.
    p.setPen(QPen(Qt::black, 1));
    const QRectF block(w * 0.55, h * 0.8, w * 0.41, h * 0.16);
    p.drawRect(block);
    p.drawLine(QPointF(block.left(), block.center().y()),
               QPointF(block.right(), block.center().y()));
    const QRectF top(block.left() + 6, block.top(), block.width() - 12, block.height() / 2);
    p.drawText(top, Qt::AlignVCenter | Qt::AlignLeft,
               QFontMetricsF(p.font()).elidedText(title, Qt::ElideRight, top.width()));
    p.drawText(top.translated(0, block.height() / 2), Qt::AlignVCenter | Qt::AlignLeft,
               QStringLiteral("S=1:50  単位 mm"));
    return image;
}

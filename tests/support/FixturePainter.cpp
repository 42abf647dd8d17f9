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

// Same generator as the delivery writer's, kept local so the painter stands alone.
quint64 NextRandom(quint64& state) {
    quint64 z = (state += 0x9E3779B97F4A7C15ull);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
    return z ^ (z >> 31);
}

double RandomUnit(quint64& state) {
    return static_cast<double>(NextRandom(state) >> 11) * (1.0 / 9007199254740992.0);
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
    const QPointF o = area.topLeft();
    p.setPen(QPen(QColor(90, 90, 90), std::max(1.0, w * 0.004)));
    switch (scene) {
        case FixtureScene::Wall: {
            p.setBrush(QColor(185, 185, 180));
            QPolygonF wall{{o.x() + w * 0.15, o.y() + h},
                           {o.x() + w * 0.25, o.y() + h * 0.15},
                           {o.x() + w * 0.85, o.y() + h * 0.15},
                           {o.x() + w * 0.95, o.y() + h}};
            p.drawPolygon(wall);
            for (int k = 1; k < 5; ++k) {
                const double x = o.x() + w * (0.25 + 0.12 * k);
                p.drawLine(QPointF(x, o.y() + h * 0.15), QPointF(x, o.y() + h));
            }
            break;
        }
        case FixtureScene::Earth: {
            p.setBrush(QColor(140, 105, 60));
            QPolygonF mound{{o.x(), o.y() + h},
                            {o.x() + w * 0.3, o.y() + h * 0.35},
                            {o.x() + w * 0.6, o.y() + h * 0.3},
                            {o.x() + w, o.y() + h}};
            p.drawPolygon(mound);
            // an excavator in flat yellow
            p.setBrush(QColor(240, 190, 30));
            p.drawRect(QRectF(o.x() + w * 0.62, o.y() + h * 0.45, w * 0.22, h * 0.25));
            p.drawLine(QPointF(o.x() + w * 0.62, o.y() + h * 0.5),
                       QPointF(o.x() + w * 0.45, o.y() + h * 0.3));
            p.drawLine(QPointF(o.x() + w * 0.45, o.y() + h * 0.3),
                       QPointF(o.x() + w * 0.4, o.y() + h * 0.6));
            p.setBrush(QColor(50, 50, 50));
            p.drawRect(QRectF(o.x() + w * 0.6, o.y() + h * 0.7, w * 0.26, h * 0.1));
            break;
        }
        case FixtureScene::Box: {
            p.setBrush(QColor(175, 175, 170));
            const QRectF outer(o.x() + w * 0.2, o.y() + h * 0.35, w * 0.6, h * 0.6);
            p.drawRect(outer);
            p.setBrush(QColor(50, 50, 55));
            p.drawRect(outer.adjusted(w * 0.08, h * 0.1, -w * 0.08, -h * 0.1));
            break;
        }
        case FixtureScene::Layers: {
            const QColor layers[] = {QColor(40, 40, 45), QColor(120, 115, 105),
                                     QColor(165, 150, 120)};
            for (int k = 0; k < 3; ++k) {
                p.setBrush(layers[k]);
                p.drawRect(QRectF(o.x(), o.y() + h * (0.55 + 0.15 * k), w, h * 0.15));
            }
            p.setPen(QPen(Qt::white, std::max(2.0, w * 0.01), Qt::DashLine));
            p.drawLine(QPointF(o.x(), o.y() + h * 0.6), QPointF(o.x() + w, o.y() + h * 0.6));
            break;
        }
        case FixtureScene::Rail: {
            p.setBrush(QColor(200, 200, 205));
            for (int k = 0; k < 6; ++k) {
                p.drawRect(
                    QRectF(o.x() + w * (0.05 + 0.17 * k), o.y() + h * 0.45, w * 0.02, h * 0.5));
            }
            p.setBrush(QColor(235, 235, 240));
            p.drawRect(QRectF(o.x(), o.y() + h * 0.45, w, h * 0.12));
            break;
        }
        case FixtureScene::Slope: {
            p.setBrush(QColor(170, 170, 160));
            QPolygonF slope{{o.x(), o.y() + h},
                            {o.x() + w * 0.45, o.y() + h * 0.2},
                            {o.x() + w, o.y() + h * 0.2},
                            {o.x() + w, o.y() + h}};
            p.drawPolygon(slope);
            for (int row = 1; row < 6; ++row) {
                const double y = o.y() + h * (0.2 + 0.8 * row / 6.0);
                const double x0 = o.x() + w * 0.45 * (1.0 - row / 6.0 * 1.0);
                p.drawLine(QPointF(x0, y), QPointF(o.x() + w, y));
            }
            break;
        }
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
    const double ax = area.left();
    const double ay = area.top();
    const double aw = area.width();
    const double ah = area.height();
    const QPen thin(Qt::black, 1);
    switch (scene) {
        case FixtureScene::Wall:
        case FixtureScene::Box:
        case FixtureScene::Rail: {
            if (scene == FixtureScene::Box) {
                const QRectF outer(ax + aw * 0.15, ay + ah * 0.2, aw * 0.7, ah * 0.7);
                p.drawRect(outer);
                p.drawRect(outer.adjusted(aw * 0.1, ah * 0.1, -aw * 0.1, -ah * 0.1));
                p.setPen(thin);
                Dimension(p, {outer.left(), outer.bottom() + 15},
                          {outer.right(), outer.bottom() + 15}, QStringLiteral("2400"), {0, 14});
                Dimension(p, {outer.right() + 15, outer.top()},
                          {outer.right() + 15, outer.bottom()}, QStringLiteral("2000"), {40, 0});
            } else {
                QPolygonF wall{{ax + aw * 0.3, ay + ah * 0.1},  {ax + aw * 0.45, ay + ah * 0.1},
                               {ax + aw * 0.55, ay + ah * 0.8}, {ax + aw * 0.9, ay + ah * 0.8},
                               {ax + aw * 0.9, ay + ah},        {ax + aw * 0.1, ay + ah},
                               {ax + aw * 0.1, ay + ah * 0.8},  {ax + aw * 0.3, ay + ah * 0.8}};
                p.drawPolygon(wall);
                p.setPen(thin);
                Dimension(p, {ax + aw * 0.3, ay + ah * 0.1 - 15},
                          {ax + aw * 0.45, ay + ah * 0.1 - 15}, QStringLiteral("300"), {0, -14});
                Dimension(p, {ax + aw * 0.05, ay + ah * 0.1}, {ax + aw * 0.05, ay + ah},
                          QStringLiteral("1500"), {-40, 0});
                Dimension(p, {ax + aw * 0.1, ay + ah + 15}, {ax + aw * 0.9, ay + ah + 15},
                          QStringLiteral("1800"), {0, 14});
            }
            break;
        }
        case FixtureScene::Earth:
        case FixtureScene::Slope: {
            p.drawLine(QPointF(ax, ay + ah * 0.2), QPointF(ax + aw * 0.3, ay + ah * 0.2));
            p.drawLine(QPointF(ax + aw * 0.3, ay + ah * 0.2), QPointF(ax + aw * 0.75, ay + ah));
            p.drawLine(QPointF(ax + aw * 0.75, ay + ah), QPointF(ax + aw, ay + ah));
            if (scene == FixtureScene::Slope) {
                for (int k = 1; k < 6; ++k) {
                    const double t = k / 6.0;
                    const QPointF on(ax + aw * (0.3 + 0.45 * t), ay + ah * (0.2 + 0.8 * t));
                    p.drawLine(on, on + QPointF(-aw * 0.06, ah * 0.04));
                }
            }
            p.setPen(thin);
            p.drawText(
                QRectF(ax + aw * 0.55, ay + ah * 0.45, aw * 0.3, 24), Qt::AlignLeft,
                scene == FixtureScene::Slope ? QStringLiteral("1:0.5") : QStringLiteral("1:1.5"));
            Dimension(p, {ax + aw * 0.95, ay + ah * 0.2}, {ax + aw * 0.95, ay + ah},
                      QStringLiteral("3000"), {-40, 0});
            break;
        }
        case FixtureScene::Layers: {
            const double thickness[] = {0.15, 0.3, 0.4};
            const char* labels[] = {"t=50", "t=150", "t=200"};
            double y = ay + ah * 0.1;
            for (int k = 0; k < 3; ++k) {
                const QRectF layer(ax, y, aw, ah * thickness[k]);
                p.drawRect(layer);
                p.drawText(layer.adjusted(aw + 10, 0, aw + 120, 0),
                           Qt::AlignVCenter | Qt::AlignLeft, QString::fromLatin1(labels[k]));
                y += ah * thickness[k];
            }
            p.setPen(thin);
            Dimension(p, {ax, ay + ah * 0.1 - 15}, {ax + aw, ay + ah * 0.1 - 15},
                      QStringLiteral("W=3500"), {0, -14});
            break;
        }
    }

    // title block
    p.setPen(QPen(Qt::black, 1));
    const QRectF block(w * 0.55, h * 0.8, w * 0.41, h * 0.16);
    p.drawRect(block);
    p.drawLine(QPointF(block.left(), block.center().y()),
               QPointF(block.right(), block.center().y()));
    const QRectF top(block.left() + 6, block.top(), block.width() - 12, block.height() / 2);
    const QRectF bottom(block.left() + 6, block.center().y(), block.width() - 12,
                        block.height() / 2);
    p.drawText(top, Qt::AlignVCenter | Qt::AlignLeft,
               QFontMetricsF(p.font()).elidedText(title, Qt::ElideRight, top.width()));
    p.drawText(bottom, Qt::AlignVCenter | Qt::AlignLeft, QStringLiteral("S=1:50  単位 mm"));
    return image;
}

#include "panels/ToviNamePlate.h"

#include "review/ToviLabelManager.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QStyleOptionFocusRect>
#include <QSvgRenderer>

#include <algorithm>

namespace {

const char* const kLabelIcons[6] = {"ok", "ng1", "ng2", "ng3", "comment", "user"};
constexpr int kMarkSize = 16;

// A picture of the plate's own, drawn from its SVG at the size asked.
QPixmap Picture(const QString& name, QSize size) {
    QPixmap pixmap(size * 2);
    pixmap.fill(Qt::transparent);
    QSvgRenderer renderer(QStringLiteral(":/tovi/icons/%1.svg").arg(name));
    QPainter painter(&pixmap);
    renderer.render(&painter);
    painter.end();
    pixmap.setDevicePixelRatio(2);
    return pixmap;
}

}  // namespace

ToviLabelButton::ToviLabelButton(int label, QWidget* parent) : QPushButton(parent), label(label) {
    setObjectName(QStringLiteral("label%1").arg(1200 + label));
    setFlat(true);
    setFocusPolicy(Qt::TabFocus);
    setIconSize(QSize(32, 20));
    SetPressed(false);
}

void ToviLabelButton::SetPressed(bool on) {
    pressed = on;
    setIcon(QIcon(Picture(QStringLiteral("label-%1-%2")
                              .arg(QLatin1String(kLabelIcons[label]),
                                   on ? QLatin1String("on") : QLatin1String("off")),
                          QSize(32, 20))));
}

void ToviLabelButton::SetLabelName(const QString& name) {
    labelName = name;
    setToolTip(name);
    setAccessibleName(name);
}

QColor ToviNamePlate::PlateColour(bool selected) {
    return selected ? QColor(114, 70, 46) : QColor(226, 208, 179);
}

ToviNamePlate::ToviNamePlate(QWidget* parent)
    : QWidget(parent), photoMark(new QLabel(this)), checkMark(new QLabel(this)) {
    setObjectName(QStringLiteral("namePlate"));
    setFocusPolicy(Qt::StrongFocus);
    setFixedHeight(kHeight);
    for (int label = 0; label < 6; ++label) {
        buttons[label] = new ToviLabelButton(label, this);
        connect(buttons[label], &QPushButton::clicked, this, [this, label] {
            buttons[label]->SetPressed(!buttons[label]->IsPressed());
            emit LabelClicked(label);
        });
    }
    photoMark->setObjectName(QStringLiteral("photoButton"));
    checkMark->setObjectName(QStringLiteral("checkButton"));
    for (QLabel* mark : {photoMark, checkMark}) {
        mark->setEnabled(false);  // they show a state and take no clicks
        mark->setFixedSize(kMarkSize, kMarkSize);
    }
    SetPhotoStatus(0);
    SetCheckStatus(0);
}

void ToviNamePlate::SetTitle(const QString& text) {
    title = text;
    setToolTip(text);
    update();
}

void ToviNamePlate::SetSelected(bool on) {
    if (selected != on) {
        selected = on;
        update();
    }
}

void ToviNamePlate::ApplyLabelNames(const ToviLabelManager& labels) {
    for (int label = 0; label < 6; ++label) {
        buttons[label]->SetLabelName(
            labels.GetLabelAttribute(static_cast<unsigned long>(label)).GetName());
    }
}

void ToviNamePlate::SetCommentTip(const QString& comment) {
    buttons[4]->setToolTip(comment.isEmpty() ? QStringLiteral("コメント未記入") : comment);
}

void ToviNamePlate::ShowButtons(bool shown) {
    for (ToviLabelButton* button : buttons) {
        button->setVisible(shown);
    }
}

void ToviNamePlate::SetPhotoStatus(int status) {
    photoStatus = status == 1 ? 1 : 0;
    photoMark->setPixmap(Picture(QStringLiteral("drawing-%1").arg(photoStatus),
                                 QSize(kMarkSize, kMarkSize)));
}

void ToviNamePlate::SetCheckStatus(int status) {
    checkStatus = status == 1 || status == 2 ? status : 0;
    checkMark->setPixmap(Picture(QStringLiteral("check-%1").arg(checkStatus),
                                 QSize(kMarkSize, kMarkSize)));
}

void ToviNamePlate::Layout() {
    const int w = width();
    const int h = height();
    const int s = kMarkSize;
    // The buttons are wide where the plate is, and give way down to square ones before the
    // title, of which a third of the plate stays, loses its place.
    const int room = (w - 2 * s - 2 - w / 3) / 6;
    const int b = std::clamp(room, h, static_cast<int>(h * 1.8));
    photoMark->move(w - 2 * s - 1, 3 + (h - 6 - s) / 2);
    checkMark->move(w - s - 1, 3 + (h - 6 - s) / 2);
    for (int i = 0; i < 6; ++i) {
        buttons[i]->setGeometry(w - 2 * s - 6 * b - 1 + i * b, 1, b, h - 2);
    }
}

void ToviNamePlate::resizeEvent(QResizeEvent*) {
    Layout();
}

void ToviNamePlate::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), PlateColour(selected));
    painter.setPen(selected ? Qt::white : Qt::black);
    // The title stops where the buttons start; its whole text is in the tool tip.
    const int textRight = buttons[0]->isVisible() ? buttons[0]->x() - 2 : width() - 2 * kMarkSize - 4;
    const QRect textRect(2, 0, std::max(0, textRight - 2), height());
    painter.drawText(textRect, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                     fontMetrics().elidedText(title.isNull() ? QString() : QLatin1Char(' ') + title,
                                              Qt::ElideRight, textRect.width()));
    painter.setPen(QColor(0, 0, 0, 60));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    if (hasFocus()) {
        QStyleOptionFocusRect option;
        option.initFrom(this);
        option.rect = rect().adjusted(1, 1, -1, -1);
        style()->drawPrimitive(QStyle::PE_FrameFocusRect, &option, &painter, this);
    }
}

void ToviNamePlate::mousePressEvent(QMouseEvent* event) {
    if (!active) {
        return;
    }
    if (event->button() == Qt::LeftButton) {
        emit Clicked();
        setFocus(Qt::MouseFocusReason);
    } else if (event->button() == Qt::RightButton) {
        emit RightClicked();
        if (!active) {
            setFocus(Qt::MouseFocusReason);
            update();
        }
    }
}

void ToviNamePlate::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        emit DoubleClicked();
    }
}

void ToviNamePlate::keyPressEvent(QKeyEvent* event) {
    // Every key goes to the panel, which pages and moves the selection.
    emit KeyPressed(event->key());
    event->accept();
}

void ToviNamePlate::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    update();
}

void ToviNamePlate::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    update();
}

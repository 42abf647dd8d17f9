#include "platform/widgets/ToviWaitWindow.h"

#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

ToviWaitWindow::ToviWaitWindow(QWidget* parent, const QString& text, int animation)
    : QDialog(parent, Qt::Dialog | Qt::WindowTitleHint | Qt::CustomizeWindowHint),
      message(new QLabel(text, this)),
      animation(animation) {
    setObjectName(QStringLiteral("GaluWaitMovieDlg"));
    setModal(true);
    message->setObjectName(QStringLiteral("message"));
    message->setAlignment(Qt::AlignCenter);
    message->setMinimumWidth(280);
    auto* busy = new QProgressBar(this);
    busy->setObjectName(QStringLiteral("busy"));
    busy->setRange(0, 0);  // a moving bar for as long as the work runs
    busy->setTextVisible(false);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(message);
    layout->addWidget(busy);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

QString ToviWaitWindow::Message() const {
    return message->text();
}

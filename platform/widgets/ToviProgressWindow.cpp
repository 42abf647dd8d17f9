#include "platform/widgets/ToviProgressWindow.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

ToviProgressWindow::ToviProgressWindow(QWidget* owner)
    : QDialog(owner, Qt::Dialog | Qt::WindowTitleHint | Qt::CustomizeWindowHint |
                         Qt::WindowCloseButtonHint),
      message(new QLabel(this)),
      bar(new QProgressBar(this)),
      percent(new QLabel(QStringLiteral("100%"), this)),
      cancel(new QPushButton(QStringLiteral("キャンセル"), this)) {
    setObjectName(QStringLiteral("ToviProgressDlg"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    message->setObjectName(QStringLiteral("message"));
    message->setMinimumWidth(360);
    bar->setObjectName(QStringLiteral("bar"));
    bar->setTextVisible(false);
    percent->setObjectName(QStringLiteral("percent"));
    percent->setMinimumWidth(percent->fontMetrics().horizontalAdvance(QStringLiteral("100%")));
    percent->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    cancel->setObjectName(QStringLiteral("cancel"));
    cancel->setAutoDefault(false);
    connect(cancel, &QPushButton::clicked, this, [this] {
        if (cancelHandler) {
            cancelHandler();
        }
    });

    auto* barRow = new QHBoxLayout;
    barRow->addWidget(bar, 1);
    barRow->addWidget(percent);
    auto* buttonRow = new QHBoxLayout;
    buttonRow->addStretch();
    buttonRow->addWidget(cancel);
    buttonRow->addStretch();
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(message);
    layout->addLayout(barRow);
    layout->addLayout(buttonRow);
    layout->setSizeConstraint(QLayout::SetFixedSize);
}

void ToviProgressWindow::SetMessage(const QString& text) {
    message->setText(text);
}

void ToviProgressWindow::SetPercentText(const QString& text) {
    percent->setText(text);
}

void ToviProgressWindow::SetRange(int lower, int upper) {
    bar->setRange(lower, upper);
}

void ToviProgressWindow::SetPos(int pos) {
    bar->setValue(pos);
}

void ToviProgressWindow::ShowCancelButton(bool shown) {
    cancel->setVisible(shown);
    cancel->setEnabled(shown);
}

void ToviProgressWindow::closeEvent(QCloseEvent* event) {
    event->ignore();
    if (cancel->isVisible() && cancelHandler) {
        cancelHandler();
    }
}

void ToviProgressWindow::reject() {
    // Escape acts as the close box: it asks for a cancel and leaves the window to the loop.
    if (cancel->isVisible() && cancelHandler) {
        cancelHandler();
    }
}

ToviProgressWindowView::ToviProgressWindowView(QWidget* owner)
    : owner(owner), window(new ToviProgressWindow(owner)) {}

ToviProgressWindowView::~ToviProgressWindowView() {
    delete window.data();
}

void ToviProgressWindowView::SetCaption(const QString& caption) {
    if (window) {
        window->setWindowTitle(caption);
    }
}

void ToviProgressWindowView::SetRange(int lower, int upper) {
    if (window) {
        window->SetRange(lower, upper);
    }
}

void ToviProgressWindowView::SetPos(int pos) {
    if (window) {
        window->SetPos(pos);
    }
}

void ToviProgressWindowView::SetMessage(const QString& message) {
    if (window) {
        window->SetMessage(message);
    }
}

void ToviProgressWindowView::SetPercentText(const QString& percent) {
    if (window) {
        window->SetPercentText(percent);
    }
}

void ToviProgressWindowView::ShowCancelButton(bool shown) {
    if (window) {
        window->ShowCancelButton(shown);
    }
}

void ToviProgressWindowView::EnableOwner(bool enable) {
    if (owner) {
        owner->setEnabled(enable);
    }
    if (!enable && window) {
        window->setEnabled(true);
    }
}

void ToviProgressWindowView::Show() {
    if (window) {
        window->show();
    }
}

void ToviProgressWindowView::Close() {
    if (window) {
        window->hide();
    }
}

void ToviProgressWindowView::SetCancelHandler(std::function<void()> handler) {
    if (window) {
        window->SetCancelHandler(std::move(handler));
    }
}

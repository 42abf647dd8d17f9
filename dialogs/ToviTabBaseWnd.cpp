#include "dialogs/ToviTabBaseWnd.h"

#include "dialogs/ToviExifPage.h"
#include "dialogs/ToviPropertyDlg.h"

#include <QFrame>
#include <QKeyEvent>
#include <QTabBar>

const QString ToviTabBaseWnd::PhotoInfoTab_ = QStringLiteral("写真情報");
const QString ToviTabBaseWnd::DrawingTab_ = QStringLiteral("参考図");
const QString ToviTabBaseWnd::ExifTab_ = QStringLiteral("Exif情報");

ToviTabBaseWnd::ToviTabBaseWnd(ToviHostDocument* document, QWidget* parent)
    : QWidget(parent), tabBar(new QTabBar(this)), frame(new QFrame(this)) {
    setObjectName(QStringLiteral("tabBaseWnd"));
    QFont small = font();
    small.setPointSize(9);
    setFont(small);
    tabBar->setObjectName(QStringLiteral("tabs"));
    tabBar->setDrawBase(true);
    tabBar->setExpanding(false);
    tabBar->addTab(PhotoInfoTab_);
    tabBar->addTab(DrawingTab_);
    tabBar->addTab(ExifTab_);
    frame->setObjectName(QStringLiteral("tabFrame"));
    frame->setFrameShape(QFrame::StyledPanel);
    frame->setFrameShadow(QFrame::Plain);
    dialog = new ToviPropertyDlg(document, frame);
    exifPage = new ToviExifPage(frame);
    exifPage->hide();
    tabBar->setCurrentIndex(0);
    dialog->HideAll();
    dialog->ShowPage(0);
    dialog->show();
    connect(tabBar, &QTabBar::currentChanged, this, &ToviTabBaseWnd::OnTabChanged);
}

ToviTabBaseWnd::~ToviTabBaseWnd() = default;

void ToviTabBaseWnd::SetContent(ToviPhoto* photo, ToviItemDef* itemDef,
                                const ToviItemShowSettings& settings) {
    dialog->SetContent(photo, itemDef, settings);
    this->photo = photo;
    exifStale = true;
    if (GetSelectedPage() == kExifPage) {
        FillExifPage();
    }
}

void ToviTabBaseWnd::ClearContent() {
    dialog->ClearContent();
    photo = nullptr;
    exifStale = false;
    exifPage->ClearContent();
}

void ToviTabBaseWnd::FillExifPage() {
    // Read only when the page is looked at: the Exif of every photograph walked past in the
    // other tabs is never read for it.
    if (exifStale) {
        exifPage->SetPhoto(photo);
        exifStale = false;
    }
}

void ToviTabBaseWnd::ShowPage(int page) {
    dialog->ShowPage(page);
}

int ToviTabBaseWnd::GetSelectedPage() const {
    return std::max(0, tabBar->currentIndex());
}

void ToviTabBaseWnd::SetSelectedPage(int page) {
    if (page >= 0 && page < tabBar->count()) {
        tabBar->setCurrentIndex(page);
    }
}

void ToviTabBaseWnd::OnTabChanged(int index) {
    if (index == kExifPage) {
        dialog->hide();
        FillExifPage();
        exifPage->show();
        return;
    }
    exifPage->hide();
    dialog->show();
    dialog->HideAll();
    dialog->ShowPage(std::max(0, index));
}

void ToviTabBaseWnd::resizeEvent(QResizeEvent*) {
    const int tabHeight = tabBar->sizeHint().height();
    tabBar->setGeometry(0, 0, width(), tabHeight);
    frame->setGeometry(0, tabHeight, width(), std::max(0, height() - tabHeight));
    // One pixel inside the display area's border.
    dialog->setGeometry(frame->contentsRect().adjusted(1, 1, -1, -1));
    exifPage->setGeometry(frame->contentsRect().adjusted(1, 1, -1, -1));
}

void ToviTabBaseWnd::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Return:
        case Qt::Key_Enter:
        case Qt::Key_Escape:
            event->accept();
            return;
        default:
            QWidget::keyPressEvent(event);
    }
}

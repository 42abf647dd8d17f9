#include "panels/ToviSpiCtrl.h"

#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "document/ToviTextPairArray.h"
#include "imagefacts/ToviControlValueParser.h"
#include "imagefacts/ToviControlValues.h"
#include "panels/ToviCaptionPane.h"
#include "panels/ToviCommentWindow.h"
#include "panels/ToviControlValueTable.h"
#include "panels/ToviImageLoader.h"
#include "panels/ToviNamePlate.h"
#include "panels/ToviSlideMode.h"
#include "panels/ToviSpiListCtrl.h"
#include "platform/ToviUi.h"
#include "platform/widgets/LumImgWnd.h"
#include "review/ToviLabelManager.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSplitter>
#include <QVBoxLayout>
#include <QVariantMap>

namespace {

const QString kControlValueTitle = QStringLiteral("施工管理値");
const QString kCommentDialog = QStringLiteral("ToviInputCommentDlg");

bool IsPanelKey(int key) {
    return key == Qt::Key_PageUp || key == Qt::Key_PageDown || key == Qt::Key_Left ||
           key == Qt::Key_Right || key == Qt::Key_Up || key == Qt::Key_Down;
}

}  // namespace

ToviSpiCtrl::ToviSpiCtrl(ToviData* data, const ToviPhotoCtrlVisualSetting* setting,
                         ToviImageLoader* loader, int id, QWidget* parent)
    : QWidget(parent),
      data(data),
      visualSetting(setting),
      loader(loader),
      id(id),
      imageWnd(new LumImgWnd(this)),
      failPlate(new QLabel(QStringLiteral("表示できません"), this)),
      namePlate(new ToviNamePlate(this)),
      splitter(new QSplitter(Qt::Vertical, this)),
      topPane(ToviCaptionPane(QStringLiteral(" 写真情報"), QStringLiteral("topPane"), splitter)),
      bottomPane(ToviCaptionPane(QStringLiteral(" 施工管理値"), QStringLiteral("bottomPane"), splitter)),
      infoList(new ToviSpiListCtrl(topPane)),
      valueTable(new ToviControlValueTable(bottomPane)),
      valueEdit(new QPlainTextEdit(bottomPane)) {
    setObjectName(QStringLiteral("spi%1").arg(id));
    setAttribute(Qt::WA_StyledBackground);
    failPlate->setObjectName(QStringLiteral("failPlate"));
    failPlate->setAlignment(Qt::AlignCenter);
    failPlate->setAutoFillBackground(true);
    failPlate->setFocusPolicy(Qt::ClickFocus);
    failPlate->hide();
    valueEdit->setObjectName(QStringLiteral("valueEdit"));
    valueEdit->setReadOnly(true);
    topPane->layout()->addWidget(infoList);
    bottomPane->layout()->addWidget(valueTable);
    bottomPane->layout()->addWidget(valueEdit);
    splitter->setObjectName(QStringLiteral("splitter"));
    splitter->setChildrenCollapsible(false);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 0);
    connect(splitter, &QSplitter::splitterMoved, this, [this] { LayoutPanes(); });

    timer.setSingleShot(true);
    timer.setInterval(kFullImageDelayMs);
    connect(&timer, &QTimer::timeout, this, &ToviSpiCtrl::OnTimer);
    if (loader) {
        connect(loader, &ToviImageLoader::Ready, this, &ToviSpiCtrl::OnReady);
    }

    connect(namePlate, &ToviNamePlate::Clicked, this, [this] { emit Clicked(this->id); });
    connect(namePlate, &ToviNamePlate::DoubleClicked, this,
            [this] { emit DoubleClicked(this->id); });
    connect(namePlate, &ToviNamePlate::RightClicked, this, [this] { emit RightClicked(this->id); });
    connect(namePlate, &ToviNamePlate::KeyPressed, this, &ToviSpiCtrl::KeyPressed);
    connect(namePlate, &ToviNamePlate::LabelClicked, this, &ToviSpiCtrl::OnLabelClicked);
    connect(imageWnd, &LumImgWnd::Clicked, this, [this] { emit Clicked(this->id); });
    connect(imageWnd, &LumImgWnd::DoubleClicked, this, [this] { emit DoubleClicked(this->id); });
    connect(imageWnd, &LumImgWnd::RightClicked, this, [this] {
        namePlate->setFocus(Qt::MouseFocusReason);
        emit RightClicked(this->id);
    });
    connect(infoList, &QTreeWidget::itemClicked, this, [this] { emit Clicked(this->id); });
    connect(infoList, &QTreeWidget::itemDoubleClicked, this,
            [this] { emit DoubleClicked(this->id); });

    for (QWidget* child : findChildren<QWidget*>()) {
        child->installEventFilter(this);
    }
    ClearPhoto();
}

ToviSpiCtrl::~ToviSpiCtrl() {
    if (loader) {
        loader->Cancel(thumbTicket);
        loader->Cancel(fullTicket);
    }
}

ToviPhoto* ToviSpiCtrl::Photo() const {
    return data && photoIndex >= 0 ? data->GetPhoto(photoIndex) : nullptr;
}

bool ToviSpiCtrl::HasCommentStrip() const {
    const ToviPhoto* photo = Photo();
    return visualSetting && visualSetting->GetVisibleComment() && photo &&
           !photo->GetComment().isEmpty();
}

bool ToviSpiCtrl::ControlValuesShown() const {
    return visualSetting && visualSetting->GetItemShowSettings().IsBold(kControlValueTitle);
}

void ToviSpiCtrl::SetPhoto(int index) {
    photoIndex = index;
    actualIndex = data ? data->GetIndexPhotoArray(index) : -1;
    ToviPhoto* photo = Photo();
    if (!photo) {
        ClearPhoto();
        update();
        return;
    }
    QPalette palette = failPlate->palette();
    palette.setColor(QPalette::Window, QColor(230, 255, 230));
    failPlate->setPalette(palette);

    // The picture: a thumbnail now, the whole picture when the timer fires.
    if (loader) {
        loader->Cancel(thumbTicket);
        loader->Cancel(fullTicket);
    }
    thumbTicket = fullTicket = 0;
    fullShown = false;
    pictureShown = false;
    imageOk = true;
    imagePath = photo->GetImagePath();
    imageWnd->SetDisableImage();
    // SVG drawings go the same two steps: the loader renders them.
    if (loader && !imagePath.isEmpty()) {
        QImage cached;
        thumbTicket = loader->Request(imagePath, ToviImageLoader::Thumb, &cached);
        if (thumbTicket == 0) {
            ShowImage(cached);
        }
    }
    timer.start();

    FillInfo();
    const ToviItemDef& def = *data->GetItemDef();
    namePlate->SetTitle(photo->GetTitle(def.GetIndexFromEnum(visualSetting->GetTitleShowType())));
    namePlate->SetPhotoStatus(photo->GetPictureCount() > 0 ? 1 : 0);
    UpdateLabelButtons();
    namePlate->SetActive(true);
    data->CheckEditJPEG(photo);
    namePlate->SetCheckStatus(static_cast<int>(photo->GetEditChkResult()));
    InvalidateNamePlate();
    LayoutChildren();
    update();
}

void ToviSpiCtrl::ClearPhoto() {
    if (data && actualIndex >= 0) {
        if (ToviPhoto* photo = data->GetPhotoActualPhotoArray(actualIndex)) {
            photo->ReleaseImage();
        }
    }
    if (loader) {
        loader->Cancel(thumbTicket);
        loader->Cancel(fullTicket);
    }
    thumbTicket = fullTicket = 0;
    photoIndex = -1;
    actualIndex = -1;
    imagePath.clear();
    timer.stop();
    imageWnd->SetDisableImage();
    infoList->clear();
    valueTable->Clear();
    namePlate->ShowButtons(false);
    namePlate->SetPhotoStatus(0);
    namePlate->SetCheckStatus(0);
    namePlate->SetActive(false);
    namePlate->SetTitle(QString());
    namePlate->SetSelected(false);
    imageOk = true;
    imageWnd->show();
    failPlate->hide();
    if (visualSetting && visualSetting->GetVisibleControlValue()) {
        valueTable->hide();
        valueEdit->clear();
        valueEdit->show();
    }
}

void ToviSpiCtrl::FillInfo() {
    infoList->ClearAll();
    valueTable->Clear();
    ToviPhoto* photo = Photo();
    const ToviItemDef* def = data ? data->GetItemDef() : nullptr;
    if (!photo || !def || def->GetCount() == 0 || !visualSetting) {
        return;
    }
    if (photo->CheckExif()) {
        photo->LoadExif();
    }
    const ToviItemShowSettings& settings = visualSetting->GetItemShowSettings();
    ToviTextPairArray shown;
    photo->GetTextPairs(def, settings, shown);
    infoList->AddDefinitionColours(*def);
    infoList->AddShowSettingColours(settings);
    infoList->Fill(settings, shown);
    infoList->AdjustColumns(
        settings.IsShowTitle(),
        visualSetting->GetImageTextArrange() == ToviPhotoCtrlVisualSetting::TextArrangeBeside);

    ToviTextPairArray all;
    photo->GetTextPairs(def, all);
    QString raw;
    all.GetValue(kControlValueTitle, raw);
    ToviControlValues values;
    ParseControlValues(raw, values);
    valueTable->SetValues(values);
    valueEdit->setPlainText(raw);
    valueTable->setVisible(valueTable->RowCount() > 0);
    valueEdit->setVisible(valueTable->RowCount() == 0);
    bottomPane->setVisible(ControlValuesShown());
}

void ToviSpiCtrl::LayoutChildren() {
    if (!visualSetting) {
        return;
    }
    const int w = width();
    const int h = height();
    const int c = HasCommentStrip() ? kCommentStripHeight : 0;
    const int area = std::max(0, h - ToviNamePlate::kHeight);
    int imageWidth = 0;
    switch (visualSetting->GetImageTextArrange()) {
        case ToviPhotoCtrlVisualSetting::TextArrangeHidden:
            imageWidth = w;
            splitter->hide();
            break;
        case ToviPhotoCtrlVisualSetting::TextArrangeBeside:
            imageWidth = imagePaneShare * w / 60;
            splitter->setGeometry(imageWidth, 0, w - imageWidth, area);
            // A place without a photograph (past the last one, an empty set) shows no lists.
            splitter->setVisible(Photo() != nullptr);
            break;
        default:
            splitter->hide();
            break;
    }
    const QRect imageRect(0, c, imageWidth, std::max(0, area - c));
    imageWnd->setGeometry(imageRect);
    failPlate->setGeometry(imageRect);
    // The strip spans the picture; the cell knows that width only once it has its own size.
    if (commentStrip) {
        commentStrip->setGeometry(0, 0, imageWidth, kCommentStripHeight);
    }
    // The control values take 75 pixels the first time the panes are laid out; after that
    // a growing cell gives its room to the information list (stretch factors), so the pane
    // keeps the height the user last dragged it to.
    if (splitter->isVisible() && !panesPlaced && area > 0) {
        splitter->setSizes({std::max(0, area - 75), 75});
        panesPlaced = true;
    }
    LayoutPanes();
    namePlate->setGeometry(0, area, w, ToviNamePlate::kHeight);
}

void ToviSpiCtrl::LayoutPanes() {
    bottomPane->setVisible(ControlValuesShown());
    if (visualSetting) {
        infoList->AdjustColumns(
            visualSetting->GetItemShowSettings().IsShowTitle(),
            visualSetting->GetImageTextArrange() == ToviPhotoCtrlVisualSetting::TextArrangeBeside);
    }
}

void ToviSpiCtrl::ApplyLabelNames() {
    if (data && data->GetLabelManager()) {
        namePlate->ApplyLabelNames(*data->GetLabelManager());
    }
}

void ToviSpiCtrl::UpdateLabelButtons() {
    const ToviPhoto* photo = Photo();
    if (!photo) {
        return;
    }
    for (int label = 0; label < 6; ++label) {
        namePlate->Button(label)->SetPressed(photo->IsLabelPasted(static_cast<unsigned>(label)));
    }
    namePlate->ShowButtons(true);
    namePlate->SetCommentTip(photo->GetComment());
}

void ToviSpiCtrl::FocusChild(int windowId) {
    QWidget* target = this;
    switch (windowId) {
        case 1001:
        case 1095:
            target = imageOk ? static_cast<QWidget*>(imageWnd) : failPlate;
            break;
        case 1102:
            target = infoList;
            break;
        case 1103:
            target = namePlate;
            break;
        case 1105:
        case 1106:
            target = valueTable->RowCount() > 0 ? static_cast<QWidget*>(valueTable) : valueEdit;
            break;
        default:
            if (windowId >= 1200 && windowId <= 1205) {
                target = namePlate->Button(windowId - 1200);
            }
            break;
    }
    target->setFocus(Qt::OtherFocusReason);
}

void ToviSpiCtrl::ClearAnchor() {
    if (imageWnd->IsEnableImage()) {
        imageWnd->ExecClearAnchor();
    }
}

void ToviSpiCtrl::InvalidateNamePlate() {
    const ToviPhoto* photo = Photo();
    namePlate->SetSelected(photo && photo->IsSelected());
    namePlate->update();
}

QSize ToviSpiCtrl::GetImageSize() const {
    return imageWnd->size();
}

void ToviSpiCtrl::AdoptCommentWindow(ToviCommentWindow* window) {
    commentStrip = window;
    window->setFocusPolicy(Qt::ClickFocus);
    window->installEventFilter(this);
    connect(window, &ToviCommentWindow::Clicked, this, [this](ToviCommentWindow* strip) {
        emit Clicked(id);
        strip->setFocus(Qt::MouseFocusReason);
    });
    connect(window, &ToviCommentWindow::DoubleClicked, this, [this] { OnLabelClicked(4); });
}

void ToviSpiCtrl::ShowImage(const QImage& image) {
    if (image.isNull()) {
        imageWnd->SetDisableImage();
    } else {
        imageWnd->SetImage(image);
    }
    imageWnd->setVisible(imageOk);
    failPlate->setVisible(!imageOk);
    if (!pictureShown && Photo()) {
        pictureShown = true;
        emit PictureShown(id);
    }
}

void ToviSpiCtrl::OnTimer() {
    if (!loader || imagePath.isEmpty()) {
        // A photograph the delivery names no file for shows the fail plate.
        if (imagePath.isEmpty() && Photo()) {
            imageOk = false;
        }
        ShowImage(QImage());
        return;
    }
    QImage cached;
    fullTicket = loader->Request(imagePath, ToviImageLoader::Full, &cached);
    if (fullTicket == 0) {
        fullShown = true;
        imageOk = !cached.isNull();
        ShowImage(cached);
    }
}

void ToviSpiCtrl::OnReady(quint64 ticket, const QString&, int kind, const QImage& image) {
    if (ticket == 0) {
        return;
    }
    if (ticket == fullTicket && kind == ToviImageLoader::Full) {
        fullTicket = 0;
        fullShown = true;
        imageOk = !image.isNull();
        ShowImage(image);
    } else if (ticket == thumbTicket && kind == ToviImageLoader::Thumb) {
        thumbTicket = 0;
        if (!fullShown && !image.isNull()) {
            ShowImage(image);
        }
    }
}

void ToviSpiCtrl::OnLabelClicked(int label) {
    ToviPhoto* photo = Photo();
    if (label == 4 && IsSlideMode()) {
        namePlate->Button(4)->SetPressed(!namePlate->Button(4)->IsPressed());
        ToviUi::Instance().MessageBox(
            this, QStringLiteral("スライドモード中はコメントの編集ができません。"), QString(),
            ToviUi::ButtonsOk, ToviUi::IconInformation);
        return;
    }
    if (!photo) {
        return;
    }
    const bool pasted = photo->IsLabelPasted(static_cast<unsigned>(label));
    if (label == 4) {
        // The button shows the photograph's state again until the comment is settled.
        namePlate->Button(4)->SetPressed(pasted);
        emit pasted ? PasteLabel(4, this) : RemoveLabel(4, this);
        QVariantMap values{{QStringLiteral("comment"), photo->GetComment()}};
        if (ToviUi::Instance().RunDialog(this, kCommentDialog, values)) {
            const QString text = values.value(QStringLiteral("comment")).toString();
            QString bare = text;
            bare.remove(QLatin1Char(' ')).remove(QChar(0x3000));
            photo->SetComment(bare.isEmpty() ? QString() : text);
            namePlate->SetCommentTip(photo->GetComment());
            if (!pasted && !bare.isEmpty()) {
                emit PasteLabel(4, this);
            } else if (pasted && bare.isEmpty()) {
                emit RemoveLabel(4, this);
            }
        }
    } else if (!pasted) {
        emit PasteLabel(label, this);
        if (label == 0) {
            for (int ng = 1; ng <= 3; ++ng) {
                emit RemoveLabel(ng, this);
            }
        } else if (label <= 3) {
            emit RemoveLabel(0, this);
        }
    } else {
        emit RemoveLabel(label, this);
    }
    data->SetCheckStatusChanged(true);
    emit Clicked(id);
    if (label == 4) {
        emit CommentChanged(this);
    }
}

void ToviSpiCtrl::resizeEvent(QResizeEvent*) {
    LayoutChildren();
}

void ToviSpiCtrl::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    LayoutChildren();  // the panes are placed once the splitter is on show
}

bool ToviSpiCtrl::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress) {
        auto* key = static_cast<QKeyEvent*>(event);
        if ((key->modifiers() & Qt::ControlModifier) && IsPanelKey(key->key())) {
            emit KeyPressed(key->key());
            return true;
        }
    } else if (event->type() == QEvent::FocusIn && photoIndex >= 0 &&
               (watched == infoList || watched == valueTable || watched == valueEdit ||
                watched == namePlate)) {
        // The focus in a part of the cell selects the cell.
        emit Clicked(id);
    } else if (event->type() == QEvent::MouseButtonPress && watched == failPlate) {
        failPlate->setFocus(Qt::MouseFocusReason);
    }
    return QWidget::eventFilter(watched, event);
}

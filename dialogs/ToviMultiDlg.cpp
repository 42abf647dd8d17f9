#include "dialogs/ToviMultiDlg.h"

#include "dialogs/ToviImageWnd.h"
#include "dialogs/ToviSvgView.h"
#include "dialogs/ToviTabBaseWnd.h"
#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "document/ToviItemDef.h"
#include "panels/ToviSlideMode.h"
#include "platform/LumImage.h"
#include "platform/MibFile.h"
#include "platform/widgets/LumImgWnd.h"
#include "reports/ToviPhotoExport.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QAction>
#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QSlider>
#include <QSplitter>
#include <QStackedWidget>
#include <QToolBar>
#include <QVBoxLayout>

#include <algorithm>

const QString ToviMultiDlg::NoPhotoTitle_ = QStringLiteral("< 写真を選択してください >");

namespace {

constexpr int kSliderUnit = 20;  // brightness per slider step

}  // namespace

ToviMultiDlg::ToviMultiDlg(ToviZoomOwner* owner, QWidget* parent, ToviPhoto* photo,
                           ToviItemDef* itemDef, ToviData* data, bool infoVisible)
    : QDialog(parent, Qt::Window),
      owner(owner),
      photo(photo),
      path(photo ? photo->GetImagePath() : QString()),
      itemDef(itemDef),
      data(data),
      imageToolBar(new QToolBar(this)),
      windowToolBar(new QToolBar(this)),
      sliderBox(new QGroupBox(this)),
      slider(new QSlider(Qt::Vertical, sliderBox)),
      splitter(new QSplitter(Qt::Horizontal, this)),
      activeView(new QStackedWidget),
      imageWnd(new LumImgWnd),
      svgView(new ToviSvgView),
      tabWnd(new ToviTabBaseWnd(nullptr)),
      infoVisible(infoVisible) {
    setObjectName(QStringLiteral("ToviMultiDlg"));
    setAttribute(Qt::WA_DeleteOnClose, false);
    setWindowTitle(NoPhotoTitle_);
    setSizeGripEnabled(true);

    imageToolBar->setObjectName(QStringLiteral("imageToolBar"));
    windowToolBar->setObjectName(QStringLiteral("windowToolBar"));
    for (QToolBar* bar : {imageToolBar, windowToolBar}) {
        bar->setToolButtonStyle(Qt::ToolButtonTextOnly);
        bar->setMovable(false);
    }
    AddTool(imageToolBar, kRotateLeft, QStringLiteral("左回転"));
    AddTool(imageToolBar, kRotateRight, QStringLiteral("右回転"));
    AddTool(imageToolBar, kRestore, QStringLiteral("戻す"));
    imageToolBar->addSeparator();
    AddTool(imageToolBar, kInformation, QStringLiteral("情報"))->setCheckable(true);
    imageToolBar->addSeparator();
    AddTool(imageToolBar, kSave, QStringLiteral("写真保存"));
    AddTool(windowToolBar, kArrange, QStringLiteral("整列"));
    AddTool(windowToolBar, kClose, QStringLiteral("閉じる"));
    AddTool(windowToolBar, kCloseAll, QStringLiteral("全閉"));
    AddTool(windowToolBar, kFix, QStringLiteral("固定"))->setCheckable(true);

    // Lighter at the top: the slider's top end is its largest value here.
    sliderBox->setObjectName(QStringLiteral("sliderBox"));
    slider->setObjectName(QStringLiteral("brightness"));
    slider->setRange(-100, 100);
    slider->setTickInterval(10);
    slider->setTickPosition(QSlider::TicksLeft);
    slider->setPageStep(10);
    slider->setAccessibleName(QStringLiteral("明るさ"));
    auto* sliderLayout = new QGridLayout(sliderBox);
    sliderLayout->setContentsMargins(4, 8, 4, 8);
    sliderLayout->addWidget(new QLabel(QStringLiteral("明"), sliderBox), 0, 0,
                            Qt::AlignRight | Qt::AlignTop);
    sliderLayout->addWidget(new QLabel(QStringLiteral("0"), sliderBox), 1, 0,
                            Qt::AlignRight | Qt::AlignVCenter);
    sliderLayout->addWidget(new QLabel(QStringLiteral("暗"), sliderBox), 2, 0,
                            Qt::AlignRight | Qt::AlignBottom);
    sliderLayout->addWidget(slider, 0, 1, 3, 1);

    imageWnd->SetZoomable(true);
    imageWnd->SetCommand(0);
    activeView->addWidget(imageWnd);
    activeView->addWidget(svgView);
    activeView->setMinimumWidth(kMinPane);
    tabWnd->setMinimumWidth(kMinPane);
    splitter->setObjectName(QStringLiteral("splitter"));
    splitter->setChildrenCollapsible(false);
    splitter->addWidget(activeView);
    splitter->addWidget(tabWnd);
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 0);

    auto* root = new QVBoxLayout(this);
    root->setContentsMargins(5, 2, 5, 5);
    root->setSpacing(4);
    auto* bars = new QHBoxLayout;
    bars->addWidget(imageToolBar);
    bars->addStretch(1);
    bars->addWidget(windowToolBar);
    root->addLayout(bars);
    auto* body = new QHBoxLayout;
    body->addWidget(sliderBox);
    body->addWidget(splitter, 1);
    root->addLayout(body, 1);

    connect(Action(kRotateLeft), &QAction::triggered, this, [this] { OnRotate(-90); });
    connect(Action(kRotateRight), &QAction::triggered, this, [this] { OnRotate(90); });
    connect(Action(kRestore), &QAction::triggered, this, &ToviMultiDlg::OnRestore);
    connect(Action(kInformation), &QAction::triggered, this, &ToviMultiDlg::OnInformation);
    connect(Action(kSave), &QAction::triggered, this, &ToviMultiDlg::OnSave);
    connect(Action(kArrange), &QAction::triggered, this, [this] { this->owner->OnFixAllDlg(); });
    connect(Action(kClose), &QAction::triggered, this, &ToviMultiDlg::reject);
    connect(Action(kCloseAll), &QAction::triggered, this,
            [this] { this->owner->OnDestroyAllDlg(); });
    connect(Action(kFix), &QAction::triggered, this, &ToviMultiDlg::OnFix);
    connect(slider, &QSlider::valueChanged, this, &ToviMultiDlg::OnSliderChanged);
    connect(imageWnd, &LumImgWnd::Loaded, this, [this](bool ok) {
        Action(kRestore)->setEnabled(ok && (brightness != 0 || rotation != 0));
    });

    // A third of the width for the picture at first; the panel sets the kept place after.
    const int width = 800;
    splitter->setSizes({width / 3, width - width / 3});
    Action(kInformation)->setChecked(infoVisible);
    tabWnd->setVisible(infoVisible);
    Action(kRestore)->setEnabled(false);
    UpdateMinimumSize();
    SetPhoto(photo);
}

ToviMultiDlg::~ToviMultiDlg() = default;

ToviZoomView* ToviMultiDlg::Make(ToviZoomOwner* owner, QWidget* parent, ToviPhoto* photo,
                                 ToviItemDef* itemDef, ToviData* data, bool infoVisible) {
    return new ToviMultiDlg(owner, parent, photo, itemDef, data, infoVisible);
}

QAction* ToviMultiDlg::AddTool(QToolBar* bar, int command, const QString& text) {
    QAction* action = bar->addAction(text);
    action->setObjectName(QStringLiteral("cmd%1").arg(command));
    actions.insert(command, action);
    return action;
}

void ToviMultiDlg::UpdateMinimumSize() {
    // Both tool bars side by side, and a height of three quarters of that.
    const QMargins margins = layout() ? layout()->contentsMargins() : QMargins();
    const int w = imageToolBar->sizeHint().width() + windowToolBar->sizeHint().width() +
                  margins.left() + margins.right() + 2;
    setMinimumSize(w, w * 3 / 4);
}

bool ToviMultiDlg::IsSvg() const {
    return path.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive);
}

void ToviMultiDlg::SetPhoto(ToviPhoto* value) {
    const QList<int> sizes = splitter->sizes();
    photo = value;
    path = photo ? photo->GetImagePath() : QString();
    LoadPhoto();
    for (int command : {kRotateLeft, kRotateRight, kSave, kFix}) {
        Action(command)->setEnabled(photo != nullptr);
    }
    slider->setEnabled(photo && !IsSvg());
    slider->setTickPosition(IsSvg() ? QSlider::NoTicks : QSlider::TicksLeft);
    if (photo && IsSvg() && MibIsFileExist(path)) {
        imageWnd->SetDisableImage();
        QString html;
        ToviSvgToHtml(path, html);
        svgView->Load(path);
        activeView->setCurrentWidget(svgView);
    } else {
        svgView->Clear();
        activeView->setCurrentWidget(imageWnd);
    }
    splitter->setSizes(sizes);
}

void ToviMultiDlg::LoadPhoto() {
    if (photo && itemDef && data) {
        setWindowTitle(photo->GetTitle(
            itemDef->GetIndexFromEnum(data->GetVisualSetting().GetTitleShowType())));
    } else {
        setWindowTitle(NoPhotoTitle_);
    }
    rotation = 0;
    Action(kRestore)->setEnabled(false);
    if (photo && !IsSvg() && MibIsFileExist(path)) {
        // The brightness stays over from the photograph before.
        ApplyCorrection();
        imageWnd->setEnabled(true);
        imageWnd->OpenFile(path);
    } else {
        imageWnd->SetDisableImage();
        imageWnd->setEnabled(photo && IsSvg());
    }
    if (photo && photo->CheckExif()) {
        photo->LoadExif();
    }
    RefreshInfo();
}

void ToviMultiDlg::ClearPhoto() {
    path.clear();
    photo = nullptr;
    setWindowTitle(NoPhotoTitle_);
    imageWnd->SetDisableImage();
    imageWnd->setEnabled(false);
    svgView->Clear();
    activeView->setCurrentWidget(imageWnd);
    for (int command : {kRotateLeft, kRotateRight, kRestore, kSave, kFix}) {
        Action(command)->setEnabled(false);
    }
    slider->setEnabled(false);
    tabWnd->ClearContent();
}

bool ToviMultiDlg::IsSamePhoto(const QString& other) const {
    return !path.isEmpty() && path.compare(other, Qt::CaseInsensitive) == 0;
}

void ToviMultiDlg::SetInfoVisible(bool visible) {
    infoVisible = visible;
    Action(kInformation)->setChecked(visible);
    tabWnd->setVisible(visible);
}

int ToviMultiDlg::GetSplitterPos() const {
    const QList<int> sizes = splitter->sizes();
    return std::max(kMinPane, sizes.isEmpty() ? 0 : sizes[0]);
}

void ToviMultiDlg::SetSplitterPos(int position) {
    position = std::max(kMinPane, position);
    const int total = std::max(splitter->width(), position + kMinPane);
    splitter->setSizes({position, total - position});
}

int ToviMultiDlg::GetTabIndex() const {
    return tabWnd->GetSelectedPage();
}

void ToviMultiDlg::SetTabIndex(int index) {
    tabWnd->SetSelectedPage(index);
}

void ToviMultiDlg::RefreshInfo() {
    if (!photo || !data) {
        tabWnd->ClearContent();
        return;
    }
    const ToviPhotoCtrlVisualSetting setting = data->GetVisualSetting();
    tabWnd->SetContent(photo, itemDef, setting.GetItemShowSettings());
}

int ToviMultiDlg::SliderPos() const {
    return -slider->value();
}

void ToviMultiDlg::ApplyCorrection() {
    const int value = brightness;
    LumImgWnd::Tone tone;
    if (value != 0) {
        tone = [value](LumImage& image) { ToviImageWnd::ApplyBrightness(image, value); };
    }
    imageWnd->SetCorrection(rotation, tone);
}

void ToviMultiDlg::OnRotate(int angle) {
    if (!imageWnd->IsEnableImage()) {
        return;
    }
    rotation = (rotation + angle) % 360;
    ApplyCorrection();
    Action(kRestore)->setEnabled(true);
}

void ToviMultiDlg::OnSliderChanged(int value) {
    // The position counts down from the top, and up is light.
    const int wanted = SliderPos() * -kSliderUnit;
    Q_UNUSED(value);
    if (wanted == brightness) {
        return;
    }
    ApplyBrightness(wanted);
}

void ToviMultiDlg::ApplyBrightness(int value) {
    if (!imageWnd->IsEnableImage()) {
        return;
    }
    brightness = value;
    ApplyCorrection();
    Action(kRestore)->setEnabled(true);
}

void ToviMultiDlg::OnRestore() {
    if (!imageWnd->IsEnableImage()) {
        return;
    }
    {
        const QSignalBlocker quiet(slider);
        slider->setValue(0);
    }
    rotation = 0;
    brightness = 0;
    ApplyCorrection();
    Action(kRestore)->setEnabled(false);
}

void ToviMultiDlg::OnInformation() {
    SetInfoVisible(!infoVisible);
    owner->OnChangeDlgState(this);
}

void ToviMultiDlg::OnFix() {
    fixed = !fixed;
    Action(kFix)->setChecked(fixed);
    Action(kFix)->setText(fixed ? QStringLiteral("固定中") : QStringLiteral("固定"));
    UpdateMinimumSize();
}

LumImage ToviMultiDlg::CorrectedImage() const {
    LumImage image;
    if (path.isEmpty() || !image.Load(path)) {
        return LumImage();
    }
    image.Rotate(rotation, 0xFFFFFF, false, true);
    ToviImageWnd::ApplyBrightness(image, brightness);
    return image;
}

void ToviMultiDlg::OnSave() {
    if (!data) {
        return;
    }
    ToviPhotoExport exporter(*data, this);
    exporter.SaveFromCorrection(
        photo, [this] { return CorrectedImage(); }, rotation != 0 || brightness != 0,
        imageWnd->IsEnableImage(), IsSlideMode(), false);
}

void ToviMultiDlg::reject() {
    if (closing) {
        return;
    }
    closing = true;
    owner->OnDestroyDlg(this);
}

void ToviMultiDlg::keyPressEvent(QKeyEvent* event) {
    // Enter would close a dialog; here it does nothing.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

void ToviMultiDlg::closeEvent(QCloseEvent* event) {
    event->ignore();
    reject();
}

#include "dialogs/ToviImageWnd.h"

#include "dialogs/ToviSvgView.h"
#include "document/ToviPhoto.h"
#include "panels/ToviSlideMode.h"
#include "platform/MibFile.h"
#include "platform/widgets/LumImgWnd.h"
#include "reports/ToviPhotoExport.h"

#include <QAction>
#include <QLabel>
#include <QSlider>
#include <QStackedLayout>
#include <QToolBar>
#include <QVBoxLayout>

#include <cmath>

namespace {

constexpr int kSliderUnit = 200;  // brightness per slider step
constexpr int kSliderWidth = 150;

}  // namespace

ToviImageWnd::ToviImageWnd(ToviHostDocument*, QWidget* parent)
    : QWidget(parent),
      toolBar(new QToolBar(this)),
      slider(new QSlider(Qt::Horizontal, this)),
      zoomText(new QLabel(this)),
      imageWnd(new LumImgWnd(this)),
      svgView(new ToviSvgView(this)) {
    setObjectName(QStringLiteral("ToviImageWnd"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    toolBar->setObjectName(QStringLiteral("imageToolBar"));
    toolBar->setToolButtonStyle(Qt::ToolButtonTextOnly);
    toolBar->setIconSize(QSize(16, 16));
    AddTool(kRotateLeft, QStringLiteral("左回転"), QStringLiteral("左回転"));
    AddTool(kRotateRight, QStringLiteral("右回転"), QStringLiteral("右回転"));
    AddTool(kReset, QStringLiteral("元に戻す"), QStringLiteral("元に戻す"));
    toolBar->addSeparator();
    QAction* information =
        AddTool(kInformation, QStringLiteral("詳細情報"), QStringLiteral("詳細情報"));
    information->setCheckable(true);
    information->setChecked(true);
    toolBar->addSeparator();
    slider->setObjectName(QStringLiteral("brightness"));
    slider->setRange(-10, 10);
    slider->setPageStep(5);
    slider->setFixedWidth(kSliderWidth);
    slider->setToolTip(QStringLiteral("明るさ補正"));
    slider->setAccessibleName(QStringLiteral("明るさ補正"));
    SetSliderTicks(true);
    QAction* sliderAction = toolBar->addWidget(slider);
    sliderAction->setObjectName(QStringLiteral("cmd%1").arg(kBrightness));
    actions.insert(kBrightness, sliderAction);
    toolBar->addSeparator();
    AddTool(kSave, QStringLiteral("写真を保存"), QStringLiteral("写真を保存"));
    toolBar->addSeparator();
    QAction* fit = AddTool(kZoomFit, QStringLiteral("全体"), QStringLiteral("全体を表示 (Ctrl+0)"));
    QAction* actual = AddTool(kZoomActual, QStringLiteral("100%"), QStringLiteral("実寸で表示"));
    QAction* in = AddTool(kZoomIn, QStringLiteral("拡大"), QStringLiteral("拡大 (Ctrl++)"));
    QAction* out = AddTool(kZoomOut, QStringLiteral("縮小"), QStringLiteral("縮小 (Ctrl+-)"));
    // The zoom keys work wherever the keyboard is inside this window.
    fit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_0));
    in->setShortcuts(
        {QKeySequence(Qt::CTRL | Qt::Key_Plus), QKeySequence(Qt::CTRL | Qt::Key_Equal)});
    out->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Minus));
    for (QAction* zoomAction : {fit, in, out}) {
        zoomAction->setShortcutContext(Qt::WidgetWithChildrenShortcut);
        addAction(zoomAction);
    }
    zoomText->setObjectName(QStringLiteral("zoomText"));
    zoomText->setMinimumWidth(zoomText->fontMetrics().horizontalAdvance(QStringLiteral("8888%")));
    zoomText->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    toolBar->addWidget(zoomText);
    layout->addWidget(toolBar);

    auto* stackHolder = new QWidget(this);
    views = new QStackedLayout(stackHolder);
    imageWnd->SetZoomable(true);
    imageWnd->SetCommand(0);
    views->addWidget(imageWnd);
    views->addWidget(svgView);
    layout->addWidget(stackHolder, 1);

    connect(Action(kRotateLeft), &QAction::triggered, this, &ToviImageWnd::OnRotateLeft);
    connect(Action(kRotateRight), &QAction::triggered, this, &ToviImageWnd::OnRotateRight);
    connect(Action(kReset), &QAction::triggered, this, &ToviImageWnd::OnReset);
    connect(Action(kSave), &QAction::triggered, this, &ToviImageWnd::OnSave);
    connect(information, &QAction::triggered, this, [this] {
        // The parent decides; the check state follows its answer.
        Action(kInformation)->setChecked(informationShown);
        emit InformationRequested();
    });
    connect(fit, &QAction::triggered, imageWnd, &LumImgWnd::ZoomToFit);
    connect(actual, &QAction::triggered, imageWnd, &LumImgWnd::ZoomToActual);
    connect(in, &QAction::triggered, imageWnd, &LumImgWnd::ZoomIn);
    connect(out, &QAction::triggered, imageWnd, &LumImgWnd::ZoomOut);
    connect(slider, &QSlider::valueChanged, this, &ToviImageWnd::OnSliderMoved);
    connect(imageWnd, &LumImgWnd::ZoomChanged, this, &ToviImageWnd::UpdateZoomText);
    connect(imageWnd, &LumImgWnd::Loaded, this, [this](bool ok) {
        UpdateTools();
        emit Loaded(ok);
    });
    UpdateTools();
}

ToviImageWnd::~ToviImageWnd() = default;

QAction* ToviImageWnd::AddTool(int command, const QString& text, const QString& tip) {
    QAction* action = toolBar->addAction(text);
    action->setObjectName(QStringLiteral("cmd%1").arg(command));
    action->setToolTip(tip);
    actions.insert(command, action);
    return action;
}

bool ToviImageWnd::IsSvg() const {
    return path.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive);
}

void ToviImageWnd::SetSliderTicks(bool on) {
    slider->setTickPosition(on ? QSlider::TicksBelow : QSlider::NoTicks);
    slider->setTickInterval(5);
}

void ToviImageWnd::SetPhoto(ToviPhoto* value) {
    rotation = 0;
    changed = false;
    photo = value;
    path = photo ? photo->GetImagePath() : QString();
    if (!photo || !MibIsFileExist(path)) {
        imageWnd->SetDisableImage();
        svgView->Clear();
        views->setCurrentWidget(imageWnd);
        SetSliderTicks(!IsSvg());
        UpdateTools();
        emit Loaded(false);
        return;
    }
    if (IsSvg()) {
        imageWnd->SetDisableImage();
        // The page of the drawing is still made where the viewer keeps its work files.
        QString html;
        ToviSvgToHtml(path, html);
        const bool shown = svgView->Load(path);
        views->setCurrentWidget(svgView);
        SetSliderTicks(false);
        UpdateTools();
        emit Loaded(shown);
        return;
    }
    svgView->Clear();
    views->setCurrentWidget(imageWnd);
    SetSliderTicks(true);
    // The brightness kept from the photograph before is applied to this one as it arrives.
    changed = brightness != 0;
    ApplyCorrection();
    imageWnd->OpenFile(path);
    UpdateTools();
}

void ToviImageWnd::SetInformationChecked(bool shown) {
    informationShown = shown;
    Action(kInformation)->setChecked(shown);
}

void ToviImageWnd::ApplyBrightness(LumImage& image, int value) {
    const int step = value > 0 ? 1000 : -1000;
    const int count = value / step;
    const int remainder = value % step;
    for (int i = 0; i < count; ++i) {
        image.SetContrast(step);
    }
    if (remainder > 0) {
        image.SetContrast(remainder);
    }
}

void ToviImageWnd::ApplyCorrection() {
    const int value = brightness;
    LumImgWnd::Tone tone;
    if (value != 0) {
        tone = [value](LumImage& image) { ApplyBrightness(image, value); };
    }
    imageWnd->SetCorrection(rotation, tone);
}

void ToviImageWnd::Rotate(int angle) {
    if (!imageWnd->IsEnableImage()) {
        return;
    }
    // The remainder keeps the sign of the sum: a left turn is -90, not 270.
    rotation = (rotation + angle) % 360;
    changed = true;
    ApplyCorrection();
    UpdateTools();
}

void ToviImageWnd::OnRotateLeft() {
    Rotate(-90);
}

void ToviImageWnd::OnRotateRight() {
    Rotate(90);
}

void ToviImageWnd::OnSliderMoved(int position) {
    const int value = position * kSliderUnit;
    if (value == brightness) {
        return;
    }
    brightness = value;
    if (!imageWnd->IsEnableImage()) {
        return;
    }
    ApplyCorrection();
    changed = true;
    UpdateTools();
}

void ToviImageWnd::OnReset() {
    if (!imageWnd->IsEnableImage()) {
        return;
    }
    rotation = 0;
    brightness = 0;
    changed = false;
    {
        const QSignalBlocker quiet(slider);
        slider->setValue(0);
    }
    ApplyCorrection();
    UpdateTools();
}

LumImage ToviImageWnd::CorrectedImage() const {
    LumImage image;
    if (path.isEmpty() || !image.Load(path)) {
        return LumImage();
    }
    image.Rotate(rotation, 0xFFFFFF, false, true);
    ApplyBrightness(image, brightness);
    return image;
}

void ToviImageWnd::OnSave() {
    if (!data) {
        return;
    }
    ToviPhotoExport exporter(*data, this);
    exporter.SaveFromCorrection(
        photo, [this] { return CorrectedImage(); }, rotation != 0 || brightness != 0,
        imageWnd->IsEnableImage(), IsSlideMode(), true);
}

void ToviImageWnd::UpdateTools() {
    const bool shown = imageWnd->IsEnableImage();
    const bool svgShown = views->currentWidget() == svgView && svgView->IsLoaded();
    Action(kSave)->setEnabled(shown || svgShown);
    Action(kReset)->setEnabled(shown && changed);
    for (int command : {kRotateLeft, kRotateRight, kZoomFit, kZoomActual, kZoomIn, kZoomOut}) {
        Action(command)->setEnabled(shown);
    }
    slider->setEnabled(shown);
    UpdateZoomText(imageWnd->Zoom());
}

void ToviImageWnd::UpdateZoomText(double zoom) {
    zoomText->setText(imageWnd->IsEnableImage() ? QStringLiteral("%1%").arg(std::lround(zoom * 100))
                                                : QString());
}

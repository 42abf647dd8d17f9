#include "dialogs/ToviPropertyDlg.h"

#include "dialogs/ToviSvgView.h"
#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "document/ToviTextPairArray.h"
#include "imagefacts/ToviControlValueParser.h"
#include "imagefacts/ToviControlValues.h"
#include "panels/ToviCaptionPane.h"
#include "panels/ToviControlValueTable.h"
#include "panels/ToviSpiListCtrl.h"
#include "platform/MibFile.h"
#include "platform/ToviUi.h"
#include "platform/widgets/LumImgWnd.h"
#include "reports/ToviPhotoExport.h"
#include "settings/ToviItemShowSettings.h"

#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

const QString ToviPropertyDlg::PhotoInfoCaption_ = QStringLiteral(" 写真情報");
const QString ToviPropertyDlg::ControlValueCaption_ = QStringLiteral(" 施工管理値");
const QString ToviPropertyDlg::ControlValueTitle_ = QStringLiteral("施工管理値");
const QString ToviPropertyDlg::PositionFormat_ = QStringLiteral("%1/%2 枚目を表示");
const QString ToviPropertyDlg::NoPreviewText_ = QStringLiteral(
    "このファイルはプレビューできません。\n「参考図を別アプリケーションで起動」ボタンを\n"
    "使用してください。");

namespace {

constexpr int kListColumnWidth = 170;

QPushButton* Button(const QString& text, const QString& name, QWidget* parent) {
    auto* button = new QPushButton(text, parent);
    button->setObjectName(name);
    // Enter belongs to no button here: the tab window swallows it, as it does in a dialog.
    button->setAutoDefault(false);
    button->setEnabled(false);
    return button;
}

QLineEdit* ReadOnlyText(const QString& name, QWidget* parent) {
    auto* text = new QLineEdit(parent);
    text->setObjectName(name);
    text->setReadOnly(true);
    return text;
}

bool IsSvg(const QString& path) {
    return MibGetExt(path).compare(QLatin1String("svg"), Qt::CaseInsensitive) == 0;
}

}  // namespace

ToviPropertyDlg::ToviPropertyDlg(ToviHostDocument* document, QWidget* parent)
    : QWidget(parent),
      document(document),
      imageWnd(new LumImgWnd(this)),
      notice(new QLabel(NoPreviewText_, this)),
      previousButton(Button(QStringLiteral("前へ"), QStringLiteral("previous"), this)),
      nextButton(Button(QStringLiteral("次へ"), QStringLiteral("next"), this)),
      openButton(
          Button(QStringLiteral("参考図を別アプリケーションで起動"), QStringLiteral("open"), this)),
      positionText(ReadOnlyText(QStringLiteral("position"), this)),
      fileNameText(ReadOnlyText(QStringLiteral("fileName"), this)),
      splitter(new QSplitter(Qt::Vertical, this)),
      topPane(ToviCaptionPane(PhotoInfoCaption_, QStringLiteral("topPane"), splitter)),
      bottomPane(ToviCaptionPane(ControlValueCaption_, QStringLiteral("bottomPane"), splitter)),
      controlTable(new ToviControlValueTable(bottomPane)),
      controlText(new QPlainTextEdit(bottomPane)) {
    setObjectName(QStringLiteral("propertyDlg"));
    QFont small = font();
    small.setPointSize(9);
    setFont(small);

    imageWnd->SetCommand(0);
    notice->setObjectName(QStringLiteral("notice"));
    notice->setAlignment(Qt::AlignCenter);
    controlText->setObjectName(QStringLiteral("controlText"));
    controlText->setReadOnly(true);
    bottomPane->layout()->addWidget(controlTable);
    bottomPane->layout()->addWidget(controlText);
    splitter->setObjectName(QStringLiteral("splitter"));
    splitter->setChildrenCollapsible(false);
    // The position is the list's height: a taller window gives its room to the control values.
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    itemList = new ToviSpiListCtrl(topPane);
    topPane->layout()->addWidget(itemList);

    connect(previousButton, &QPushButton::clicked, this, &ToviPropertyDlg::OnPrevious);
    connect(nextButton, &QPushButton::clicked, this, &ToviPropertyDlg::OnNext);
    connect(openButton, &QPushButton::clicked, this, &ToviPropertyDlg::OnOpen);

    bottomPane->setVisible(showControlValues);
    UpdateControlValue();
    HideAll();
    // The tab window in front selects page 0 at once.
    ShowPage(1);
}

ToviPropertyDlg::~ToviPropertyDlg() = default;

void ToviPropertyDlg::SetContent(ToviPhoto* newPhoto, ToviItemDef* newItemDef,
                                 const ToviItemShowSettings& settings) {
    photo = newPhoto;
    itemDef = newItemDef;
    UpdateControlValue();

    // The list is made anew, so that it takes the settings' columns and colours with no
    // trace of the last photograph.
    delete itemList;
    itemList = new ToviSpiListCtrl(topPane);
    topPane->layout()->addWidget(itemList);
    itemList->setColumnWidth(0, kListColumnWidth);
    itemList->setColumnWidth(1, kListColumnWidth);
    if (photo && itemDef) {
        ToviTextPairArray pairs;
        photo->GetTextPairs(itemDef, settings, pairs);
        itemList->AddDefinitionColours(*itemDef);
        itemList->AddShowSettingColours(settings);
        itemList->Fill(settings, pairs);
    }
    itemList->AdjustColumns(settings.IsShowTitle(), false);
    itemList->show();

    const bool shown = settings.IsBold(ControlValueTitle_);
    if (shown != showControlValues) {
        showControlValues = shown;
        ShowControlValuePane();
    }
}

void ToviPropertyDlg::ClearContent() {
    photo = nullptr;
    itemDef = nullptr;
    pictureIndex = 0;
    picturePath.clear();
    loaded = false;
    image.Clear();
    imageWnd->SetDisableImage();
    if (svgView) {
        svgView->hide();
        svgView->Clear();
    }
    // A notice of the last drawing would speak of nothing now.
    notice->hide();
    imageWnd->setVisible(page == 1);
    positionText->clear();
    fileNameText->clear();
    previousButton->setEnabled(false);
    nextButton->setEnabled(false);
    openButton->setEnabled(false);
    itemList->clear();
    controlTable->Clear();
    controlText->clear();
    controlTable->hide();
    controlText->show();
}

void ToviPropertyDlg::ShowPage(int number) {
    if (number == 0) {
        page = 0;
        splitter->show();
        itemList->show();
        ShowControlValuePane();
    } else if (number == 1) {
        page = 1;
        ChooseDisplay(loaded);
        for (QWidget* control : PageOneControls()) {
            control->show();
        }
    }
}

void ToviPropertyDlg::HideAll() {
    for (QWidget* control : PageOneControls()) {
        control->hide();
    }
    splitter->hide();
    imageWnd->hide();
    notice->hide();
    if (svgView) {
        svgView->hide();
    }
}

QList<QWidget*> ToviPropertyDlg::PageOneControls() const {
    return {previousButton, nextButton, openButton, positionText, fileNameText};
}

void ToviPropertyDlg::ShowControlValuePane() {
    bottomPane->setVisible(showControlValues);
    if (!showControlValues) {
        return;
    }
    PlaceSplitter();
    const bool rows = controlTable->RowCount() > 0;
    controlTable->setVisible(rows);
    controlText->setVisible(!rows);
}

void ToviPropertyDlg::UpdateControlValue() {
    initialised = false;
    pictureIndex = 1;
    loaded = LoadPicture();
    UpdatePictureControls();
    controlTable->Clear();
    if (photo && itemDef) {
        const QString raw = photo->GetTitle(itemDef->GetIndexFromTitle(ControlValueTitle_));
        ToviControlValues values;
        ParseControlValues(raw, values);
        controlTable->SetValues(values);
        controlText->setPlainText(raw);
        const bool rows = controlTable->RowCount() > 0;
        controlTable->setVisible(rows);
        controlText->setVisible(!rows);
    }
    initialised = true;
    // With 参考図 in front, the new photograph's drawing replaces what the last one showed.
    if (page == 1) {
        ChooseDisplay(loaded);
    }
}

bool ToviPropertyDlg::LoadPicture() {
    picturePath.clear();
    if (svgView && svgView->isVisible()) {
        svgView->hide();
        imageWnd->show();
    }
    QStringList paths;
    if (photo && pictureIndex >= 1 && pictureIndex <= photo->GetPictureCount()) {
        photo->GetPicturePath(paths, pictureIndex - 1);
    }
    bool success = false;
    for (const QString& path : paths) {
        if (IsSvg(path)) {
            // Drawn by the SVG view, not decoded here.
            if (MibIsFileExist(path)) {
                picturePath = path;
            }
            continue;
        }
        const bool decoded = image.LoadForDisplay(path, kDrawingSide);
        if (!decoded && !MibIsFileExist(path)) {
            continue;
        }
        // A file that is there but cannot be decoded is kept until a later path does better.
        picturePath = path;
        if (decoded) {
            const bool grey = image.ConvGrayScaleFromMono();
            imageWnd->SetDrawFast(!grey);
            imageWnd->SetImage(image.Image());
            success = true;
            break;
        }
    }
    fileNameText->setText(QFileInfo(picturePath).fileName());
    fileNameText->setCursorPosition(0);
    ChooseDisplay(success);
    if (!success) {
        imageWnd->SetDisableImage();
        image.Clear();
    }
    return success;
}

void ToviPropertyDlg::ChooseDisplay(bool success) {
    if (IsSvg(picturePath)) {
        ShowSvg();
        return;
    }
    if (svgView) {
        svgView->hide();
    }
    if (!initialised || page != 1) {
        return;
    }
    if (success) {
        imageWnd->show();
        notice->hide();
    } else {
        // A file that is there but cannot be shown says so; no file at all leaves the window
        // empty.
        imageWnd->setVisible(picturePath.isEmpty());
        notice->setVisible(!picturePath.isEmpty());
    }
}

void ToviPropertyDlg::ShowSvg() {
    if (!svgView) {
        svgView = new ToviSvgView(this);
        svgView->hide();
    }
    // The page the export side keeps for this drawing, written once.
    QString htmlPath;
    ToviSvgToHtml(picturePath, htmlPath);
    if (svgView->Path() != picturePath || !svgView->IsLoaded()) {
        svgView->Load(picturePath);
    }
    svgView->setGeometry(DisplayRect());
    if (page != 1) {
        return;
    }
    // A drawing that cannot be read gets the notice, as a picture that cannot be decoded does.
    const bool drawn = svgView->IsLoaded();
    svgView->setVisible(drawn);
    imageWnd->hide();
    notice->setVisible(!drawn);
}

void ToviPropertyDlg::UpdatePictureControls() {
    positionText->clear();
    previousButton->setEnabled(false);
    nextButton->setEnabled(false);
    if (pictureIndex == 0) {
        openButton->setEnabled(false);
        return;
    }
    if (photo) {
        const int count = photo->GetPictureCount();
        nextButton->setEnabled(pictureIndex < count);
        previousButton->setEnabled(pictureIndex > 1);
        if (nextButton->isEnabled() || previousButton->isEnabled()) {
            positionText->setText(PositionFormat_.arg(pictureIndex).arg(count));
            positionText->setCursorPosition(0);  // a narrow box shows the start
        }
    }
    openButton->setEnabled(!picturePath.isEmpty());
}

void ToviPropertyDlg::OnNext() {
    Step(1);
}

void ToviPropertyDlg::OnPrevious() {
    Step(-1);
}

void ToviPropertyDlg::Step(int delta) {
    const int old = pictureIndex;
    const int count = photo ? photo->GetPictureCount() : 0;
    if (delta > 0 && pictureIndex < count) {
        ++pictureIndex;
    } else if (delta < 0 && pictureIndex > 1) {
        --pictureIndex;
    }
    loaded = LoadPicture();
    // A drawing with no file is not stepped onto; the window stays empty until the next step,
    // which is intended.
    if (!loaded && picturePath.isEmpty()) {
        pictureIndex = old;
    }
    UpdatePictureControls();
}

void ToviPropertyDlg::OnOpen() {
    if (!picturePath.isEmpty()) {
        ToviUi::Instance().OpenWithDefaultApplication(picturePath);
    }
}

bool ToviPropertyDlg::IsCompact() const {
    return width() < kCompactWidth;
}

QRect ToviPropertyDlg::DisplayRect() const {
    const int top = IsCompact() ? 4 * (kRowHeight + 5) : kDisplayTop;
    return QRect(0, top, width(), std::max(0, height() - top));
}

void ToviPropertyDlg::resizeEvent(QResizeEvent*) {
    PlaceControls();
}

void ToviPropertyDlg::PlaceControls() {
    const int w = width();
    if (IsCompact()) {
        // A pane too narrow for two controls a row (the detail panel's) takes them one under
        // the other, the two buttons sharing the first row, so that none is cut off.
        const int half = std::max(0, (w - 5) / 2);
        const int step = kRowHeight + 5;
        previousButton->setGeometry(0, 0, half, kRowHeight);
        nextButton->setGeometry(half + 5, 0, std::max(0, w - half - 5), kRowHeight);
        positionText->setGeometry(0, step, w, kRowHeight);
        openButton->setGeometry(0, 2 * step, w, kRowHeight);
        fileNameText->setGeometry(0, 3 * step, w, kRowHeight);
    } else {
        previousButton->setGeometry(0, 0, kButtonWidth, kRowHeight);
        nextButton->setGeometry(kButtonWidth + 5, 0, kButtonWidth, kRowHeight);
        positionText->setGeometry(240, 0, std::max(0, w - 240), kRowHeight);
        openButton->setGeometry(0, 30, kOpenButtonWidth, kRowHeight);
        fileNameText->setGeometry(kOpenButtonWidth + 5, 30, std::max(0, w - kOpenButtonWidth - 5),
                                  kRowHeight);
    }
    const QRect display = DisplayRect();
    imageWnd->setGeometry(display);
    notice->setGeometry(display);
    if (svgView) {
        svgView->setGeometry(display);
    }
    splitter->setGeometry(rect());
    PlaceSplitter();
}

void ToviPropertyDlg::PlaceSplitter() {
    // The first position is taken when there is a lower pane to give the rest to.
    const int h = splitter->height();
    if (!splitterPlaced && h > 0 && !bottomPane->isHidden()) {
        splitter->setSizes({kFirstSplitterPosition, std::max(0, h - kFirstSplitterPosition)});
        splitterPlaced = true;
    }
}

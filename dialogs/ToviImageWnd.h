#pragma once

#include "platform/LumImage.h"

#include <QHash>
#include <QWidget>

class LumImgWnd;
class QAction;
class QLabel;
class QSlider;
class QStackedLayout;
class QToolBar;
class ToviData;
class ToviHostDocument;
class ToviItemDef;
class ToviPhoto;
class ToviSvgView;

// One photograph at full size with the tools to turn it, make it lighter or darker, zoom and
// pan, show or hide the information pane, and save it. The corrections are for viewing: they
// act on what is decoded for the screen, never on the delivered file, and reach the disk only
// when the user saves them under a new name. An SVG photograph is drawn as it stands and
// cannot be corrected. The brightness chosen stays for the next photograph; the turn does not.
class ToviImageWnd : public QWidget {
    Q_OBJECT
public:
    // Command ids of the tools, which are also the actions' object names ("cmd32791", ...).
    static constexpr int kRotateLeft = 32791;
    static constexpr int kRotateRight = 32792;
    static constexpr int kReset = 32793;
    static constexpr int kInformation = 32794;
    static constexpr int kBrightness = 32795;
    static constexpr int kSave = 32796;
    // The zoom tools of this window.
    static constexpr int kZoomFit = 32900;
    static constexpr int kZoomActual = 32901;
    static constexpr int kZoomIn = 32902;
    static constexpr int kZoomOut = 32903;

    explicit ToviImageWnd(ToviHostDocument* document = nullptr, QWidget* parent = nullptr);
    ~ToviImageWnd() override;

    // document: the host's, for the windows that share its views; unused while SVG is drawn
    // here directly.
    // Shows photo (null: nothing): the turn goes back to 0, the brightness stays.
    void SetPhoto(ToviPhoto* photo);
    void SetItemDef(ToviItemDef* def) { itemDef = def; }
    // The document the photograph belongs to, for saving it; null refuses the save.
    void SetData(ToviData* value) { data = value; }
    // The information button's state, as the parent answers it.
    void SetInformationChecked(bool shown);

    ToviPhoto* Photo() const { return photo; }
    int Rotation() const { return rotation; }
    int Brightness() const { return brightness; }
    bool IsChanged() const { return changed; }
    LumImgWnd* ImageWnd() const { return imageWnd; }
    ToviSvgView* SvgView() const { return svgView; }
    QSlider* Slider() const { return slider; }
    QToolBar* ToolBar() const { return toolBar; }
    QAction* Action(int command) const { return actions.value(command); }
    // The photograph at full size with the turn and the brightness applied, for saving; empty
    // when the file cannot be decoded whole.
    LumImage CorrectedImage() const;

    // The brightness rule shared by the correction windows: whole steps of 1000 one way or
    // the other, then the remainder when it lightens. A darkening remainder is dropped, so
    // darkening works in whole steps only, as it always has.
    static void ApplyBrightness(LumImage& image, int brightness);

    void OnRotateLeft();
    void OnRotateRight();
    void OnReset();
    void OnSave();

signals:
    // The information button was pressed: the parent shows or hides its pane.
    void InformationRequested();
    // The photograph's picture was decoded (or could not be).
    void Loaded(bool ok);

private:
    QAction* AddTool(int command, const QString& text, const QString& tip);
    void Rotate(int angle);
    void OnSliderMoved(int position);
    void ApplyCorrection();
    void SetSliderTicks(bool on);
    void UpdateTools();
    void UpdateZoomText(double zoom);
    bool IsSvg() const;

    ToviItemDef* itemDef = nullptr;
    ToviData* data = nullptr;
    ToviPhoto* photo = nullptr;
    QString path;
    QToolBar* toolBar;
    QSlider* slider;
    QLabel* zoomText;
    QStackedLayout* views;
    LumImgWnd* imageWnd;
    ToviSvgView* svgView;
    QHash<int, QAction*> actions;
    int rotation = 0;
    int brightness = 0;
    bool changed = false;
    bool informationShown = true;
};

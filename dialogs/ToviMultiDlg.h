#pragma once

#include "panels/ToviZoomView.h"

#include <QDialog>
#include <QHash>

class LumImage;
class LumImgWnd;
class QAction;
class QGroupBox;
class QSlider;
class QSplitter;
class QStackedWidget;
class QToolBar;
class ToviSvgView;
class ToviTabBaseWnd;

// A floating window showing one photograph large, zoomable and pannable, with its information
// in tabs beside it, brightness and turns on a working copy, and a save command. Up to six
// are open at a time; the multi-photo panel owns them, and one that is not fixed follows the
// selection.
class ToviMultiDlg : public QDialog, public ToviZoomView {
    Q_OBJECT
public:
    static const QString NoPhotoTitle_;  // "< 写真を選択してください >"
    static constexpr int kMinPane = 60;
    // Command ids of the tools, which are also the actions' object names ("cmd1097", ...).
    static constexpr int kRotateLeft = 1097;
    static constexpr int kRotateRight = 1096;
    static constexpr int kRestore = 1099;
    static constexpr int kInformation = 1100;
    static constexpr int kSave = 1133;
    static constexpr int kArrange = 1101;
    static constexpr int kClose = 1102;
    static constexpr int kCloseAll = 1103;
    static constexpr int kFix = 1104;

    ToviMultiDlg(ToviZoomOwner* owner, QWidget* parent, ToviPhoto* photo, ToviItemDef* itemDef,
                 ToviData* data, bool infoVisible);
    ~ToviMultiDlg() override;

    // The maker the host installs for the panel.
    static ToviZoomView* Make(ToviZoomOwner* owner, QWidget* parent, ToviPhoto* photo,
                              ToviItemDef* itemDef, ToviData* data, bool infoVisible);

    QWidget* Window() override { return this; }
    void SetPhoto(ToviPhoto* photo) override;
    void ClearPhoto() override;
    bool IsSamePhoto(const QString& path) const override;
    bool IsFixed() const override { return fixed; }
    bool IsInfoVisible() const override { return infoVisible; }
    void SetInfoVisible(bool visible) override;
    int GetSplitterPos() const override;
    void SetSplitterPos(int position) override;
    int GetTabIndex() const override;
    void SetTabIndex(int index) override;
    void RefreshInfo() override;

    ToviPhoto* Photo() const { return photo; }
    int Rotation() const { return rotation; }
    int Brightness() const { return brightness; }
    // The slider's place, counted as the window shows it: negative above the middle (lighter).
    int SliderPos() const;
    LumImgWnd* ImageWnd() const { return imageWnd; }
    ToviSvgView* SvgView() const { return svgView; }
    ToviTabBaseWnd* TabWnd() const { return tabWnd; }
    QSlider* Slider() const { return slider; }
    QAction* Action(int command) const { return actions.value(command); }
    // The photograph at full size with the corrections, for saving; empty when it cannot be
    // decoded whole.
    LumImage CorrectedImage() const;

    void OnRotate(int angle);
    void OnRestore();
    void OnInformation();
    void OnFix();
    void OnSave();

public slots:
    // Escape and the close box come here, as 閉じる does.
    void reject() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    QAction* AddTool(QToolBar* bar, int command, const QString& text);
    void LoadPhoto();
    void ApplyBrightness(int value);
    void ApplyCorrection();
    void OnSliderChanged(int value);
    void UpdateMinimumSize();
    bool IsSvg() const;

    ToviZoomOwner* owner;
    ToviPhoto* photo;
    QString path;
    ToviItemDef* itemDef;
    ToviData* data;
    QToolBar* imageToolBar;
    QToolBar* windowToolBar;
    QGroupBox* sliderBox;
    QSlider* slider;
    QSplitter* splitter;
    QStackedWidget* activeView;
    LumImgWnd* imageWnd;
    ToviSvgView* svgView;
    ToviTabBaseWnd* tabWnd;
    QHash<int, QAction*> actions;
    bool fixed = false;
    bool infoVisible;
    int rotation = 0;
    int brightness = 0;
    bool closing = false;
};

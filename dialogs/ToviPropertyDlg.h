#pragma once

#include "platform/LumImage.h"

#include <QList>
#include <QString>
#include <QWidget>

class LumImgWnd;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QSplitter;
class ToviControlValueTable;
class ToviHostDocument;
class ToviItemDef;
class ToviItemShowSettings;
class ToviPhoto;
class ToviSpiListCtrl;
class ToviSvgView;

// The facts of one photograph in the tab area of the detail panel, on two pages that the tab
// window in front of it selects: 写真情報, the information list over the control values, and
// 参考図, the photograph's reference drawings one at a time with buttons to step through them
// and to open one in another application. One window whose controls are shown and hidden by
// page; it changes no data.
class ToviPropertyDlg : public QWidget {
    Q_OBJECT
public:
    static constexpr int kFirstSplitterPosition = 281;
    static constexpr int kButtonWidth = 115;
    static constexpr int kOpenButtonWidth = 236;
    static constexpr int kRowHeight = 25;
    // Narrower than this, the drawing page's controls stand one under the other.
    static constexpr int kCompactWidth = 400;
    static constexpr int kDisplayTop = 60;
    // Raster drawings are decoded for a screen of at most this side.
    static constexpr int kDrawingSide = 2560;

    static const QString PhotoInfoCaption_;     // " 写真情報"
    static const QString ControlValueCaption_;  // " 施工管理値"
    static const QString ControlValueTitle_;    // "施工管理値"
    static const QString PositionFormat_;       // "%1/%2 枚目を表示"
    static const QString NoPreviewText_;        // the notice for a drawing that cannot be shown

    // document is the host's, kept for the views that belong to it; may be null.
    explicit ToviPropertyDlg(ToviHostDocument* document, QWidget* parent = nullptr);
    ~ToviPropertyDlg() override;

    // A new photograph, or new show settings; photo and itemDef are not owned and may be null.
    void SetContent(ToviPhoto* photo, ToviItemDef* itemDef, const ToviItemShowSettings& settings);
    // Nothing to show: both pages empty, the buttons disabled.
    void ClearContent();
    // Brings page 0 (写真情報) or 1 (参考図) to the front; the caller has run HideAll first.
    void ShowPage(int page);
    void HideAll();

    ToviHostDocument* GetDocument() const { return document; }
    int Page() const { return page; }
    // The drawing shown, counted from 1; 0 when there is none.
    int PictureIndex() const { return pictureIndex; }
    // The file of the drawing shown; empty when none was found.
    const QString& PicturePath() const { return picturePath; }
    bool IsShowControlValues() const { return showControlValues; }

    ToviSpiListCtrl* ItemList() const { return itemList; }
    ToviControlValueTable* ControlTable() const { return controlTable; }
    QPlainTextEdit* ControlText() const { return controlText; }
    QSplitter* Splitter() const { return splitter; }
    QWidget* BottomPane() const { return bottomPane; }
    QPushButton* PreviousButton() const { return previousButton; }
    QPushButton* NextButton() const { return nextButton; }
    QPushButton* OpenButton() const { return openButton; }
    QLineEdit* PositionText() const { return positionText; }
    QLineEdit* FileNameText() const { return fileNameText; }
    LumImgWnd* ImageWnd() const { return imageWnd; }
    // Null until the first SVG drawing.
    ToviSvgView* SvgView() const { return svgView; }
    QLabel* Notice() const { return notice; }

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    // Drawing 1 of the photograph and the control values anew.
    void UpdateControlValue();
    // Loads drawing pictureIndex, walking its paths; true when a picture was decoded.
    bool LoadPicture();
    void ChooseDisplay(bool success);
    void ShowSvg();
    void UpdatePictureControls();
    void OnNext();
    void OnPrevious();
    void Step(int delta);
    void OnOpen();
    void ShowControlValuePane();
    // The buttons and text boxes of 参考図.
    QList<QWidget*> PageOneControls() const;
    void PlaceControls();
    void PlaceSplitter();
    QRect DisplayRect() const;
    bool IsCompact() const;

    ToviHostDocument* document;
    ToviPhoto* photo = nullptr;
    ToviItemDef* itemDef = nullptr;
    int pictureIndex = 0;
    bool initialised = false;
    bool showControlValues = false;
    bool splitterPlaced = false;
    bool loaded = false;  // the last load decoded a picture
    QString picturePath;
    int page = 0;
    LumImage image;

    LumImgWnd* imageWnd;
    ToviSvgView* svgView = nullptr;
    QLabel* notice;
    QPushButton* previousButton;
    QPushButton* nextButton;
    QPushButton* openButton;
    QLineEdit* positionText;
    QLineEdit* fileNameText;
    QSplitter* splitter;
    QWidget* topPane;
    QWidget* bottomPane;
    ToviSpiListCtrl* itemList = nullptr;
    ToviControlValueTable* controlTable;
    QPlainTextEdit* controlText;
};

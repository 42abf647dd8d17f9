#pragma once

#include <QImage>
#include <QPointer>
#include <QTimer>
#include <QWidget>

class LumImgWnd;
class QLabel;
class QPlainTextEdit;
class QSplitter;
class ToviCommentWindow;
class ToviControlValueTable;
class ToviData;
class ToviImageLoader;
class ToviNamePlate;
class ToviPhoto;
class ToviPhotoCtrlVisualSetting;
class ToviSpiListCtrl;

// One cell of the multi-photo panel: a photograph (its thumbnail at once, the whole picture
// 100 ms later, or "表示できません"), its name plate, and beside it the information list over
// the control-value table. The panel owns one cell per place on the page and reuses it from
// page to page; the cell tells the panel about clicks, keys and label presses by its signals.
class ToviSpiCtrl : public QWidget {
    Q_OBJECT
public:
    static constexpr int kFullImageDelayMs = 100;
    static constexpr int kCommentStripHeight = 30;

    // setting is the panel's copy and loader the panel's, neither owned.
    ToviSpiCtrl(ToviData* data, const ToviPhotoCtrlVisualSetting* setting, ToviImageLoader* loader,
                int id, QWidget* parent = nullptr);
    ~ToviSpiCtrl() override;

    int Id() const { return id; }
    int PhotoIndex() const { return photoIndex; }
    // Shows position index of the current array; a position without a photograph empties
    // the cell.
    void SetPhoto(int index);
    void ClearPhoto();
    void FillInfo();
    void LayoutChildren();
    void ApplyLabelNames();
    void UpdateLabelButtons();
    void FocusChild(int windowId);
    void ClearAnchor();
    void InvalidateNamePlate();
    // Whether the last whole picture could be shown.
    bool IsImageOk() const { return imageOk; }
    // Whether the photograph set last has anything on screen yet: its thumbnail, its whole
    // picture or the fail plate. An empty cell counts as shown.
    bool IsPictureShown() const { return pictureShown || photoIndex < 0 || !Photo(); }
    // Whether the whole picture (or the fail plate) is on screen: the second loading stage
    // is over.
    bool IsFullShown() const { return fullShown || !imageOk || photoIndex < 0 || !Photo(); }
    // True when the comment strip above the picture is due.
    bool HasCommentStrip() const;
    QSize GetImageSize() const;
    // Takes in a comment strip the panel put over the picture: its click selects the cell,
    // its double click works as the comment button without flipping it.
    void AdoptCommentWindow(ToviCommentWindow* window);

    ToviNamePlate* NamePlate() const { return namePlate; }
    LumImgWnd* ImageWnd() const { return imageWnd; }
    QLabel* FailPlate() const { return failPlate; }
    ToviSpiListCtrl* InfoList() const { return infoList; }
    ToviControlValueTable* ValueTable() const { return valueTable; }
    QPlainTextEdit* ValueEdit() const { return valueEdit; }

signals:
    void Clicked(int id);
    void DoubleClicked(int id);
    void RightClicked(int id);
    void KeyPressed(int key);
    void PasteLabel(int label, ToviSpiCtrl* cell);
    void RemoveLabel(int label, ToviSpiCtrl* cell);
    void CommentChanged(ToviSpiCtrl* cell);
    // The first picture of the photograph set last is on screen.
    void PictureShown(int id);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    ToviPhoto* Photo() const;
    void ShowImage(const QImage& image);
    void OnTimer();
    void OnReady(quint64 ticket, const QString& path, int kind, const QImage& image);
    void OnLabelClicked(int label);
    void LayoutPanes();
    bool ControlValuesShown() const;

    ToviData* data;
    const ToviPhotoCtrlVisualSetting* visualSetting;
    ToviImageLoader* loader;
    int id;
    int photoIndex = -1;
    int actualIndex = -1;
    bool imageOk = true;
    int imagePaneShare = 35;
    QString imagePath;
    quint64 thumbTicket = 0;
    quint64 fullTicket = 0;
    bool fullShown = false;
    bool pictureShown = false;
    bool panesPlaced = false;                  // the splitter got its first sizes
    QPointer<ToviCommentWindow> commentStrip;  // the panel's strip over the picture, if any
    QTimer timer;

    LumImgWnd* imageWnd;
    QLabel* failPlate;
    ToviNamePlate* namePlate;
    QSplitter* splitter;
    QWidget* topPane;
    QWidget* bottomPane;
    ToviSpiListCtrl* infoList;
    ToviControlValueTable* valueTable;
    QPlainTextEdit* valueEdit;
};

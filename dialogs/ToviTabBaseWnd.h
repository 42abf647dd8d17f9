#pragma once

#include <QWidget>

class QFrame;
class QTabBar;
class ToviHostDocument;
class ToviItemDef;
class ToviItemShowSettings;
class ToviPhoto;
class ToviExifPage;
class ToviPropertyDlg;

// The tabs 写真情報 and 参考図 over the one property dialog, whose pages they select. The
// detail panel and the zoom window hold one each. Enter and Esc do nothing here, so that a
// dialog holding the window is not closed by them.
class ToviTabBaseWnd : public QWidget {
    Q_OBJECT
public:
    static const QString PhotoInfoTab_;  // "写真情報"
    static const QString DrawingTab_;    // "参考図"
    static const QString ExifTab_;       // "Exif情報": every Exif group and file fact
    static constexpr int kExifPage = 2;

    // document is the host's, handed on to the dialog; may be null.
    explicit ToviTabBaseWnd(ToviHostDocument* document, QWidget* parent = nullptr);
    ~ToviTabBaseWnd() override;

    void SetContent(ToviPhoto* photo, ToviItemDef* itemDef, const ToviItemShowSettings& settings);
    void ClearContent();
    void ShowPage(int page);
    // The selected tab; none selected reads as 0.
    int GetSelectedPage() const;
    // Selects a tab as a click on it would, bringing its page to the front.
    void SetSelectedPage(int page);

    ToviPropertyDlg* GetPropertyDlg() const { return dialog; }
    ToviExifPage* ExifPage() const { return exifPage; }
    QTabBar* TabBar() const { return tabBar; }

protected:
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void OnTabChanged(int index);
    void FillExifPage();

    QTabBar* tabBar;
    QFrame* frame;  // the tabs' display area
    ToviPropertyDlg* dialog;
    ToviExifPage* exifPage;
    ToviPhoto* photo = nullptr;
    bool exifStale = false;  // the page shows another photograph than the tabs hold
};

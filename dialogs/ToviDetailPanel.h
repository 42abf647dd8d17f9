#pragma once

#include "panels/ToviPanel.h"
#include "settings/ToviItemShowSettings.h"

class QSplitter;
class ToviHostDocument;
class ToviImageWnd;
class ToviTabBaseWnd;

// The selected photograph large, with its facts beside it: the image window on the left and
// the property dialog's tabs on the right, split by a bar whose right pane keeps its width as
// the panel is resized. While hidden, the panel reads nothing: a change only marks it stale,
// and the last photograph selected is shown when it is shown again.
class ToviDetailPanel : public ToviPanel {
    Q_OBJECT
public:
    static const QString SplitterSection_;   // "DetailPanelSplitter"
    static const QString ImgWndWidthEntry_;  // "ImgWndWidth"
    static constexpr int kMinPane = 60;

    explicit ToviDetailPanel(ToviHostDocument* document = nullptr, QWidget* parent = nullptr);
    // Keeps the right pane's width for the next run.
    ~ToviDetailPanel() override;

    bool Create(QWidget* parent, int id) override;
    void OnUpdate(QWidget* sender, ToviData::UpdateHint hint, QObject* object) override;
    void OnPostAttachData() override;
    void OnPreDetachData() override {}
    // Places the bar from the kept width (half the panel and one when none was kept); the host
    // calls it once the panel has its first size.
    void AdjustSplitter() const;

    // Whether the panel is to be seen (the setting VisibleDetail); the host follows
    // VisibleChanged with its dock.
    bool Visible() const { return visible; }
    void Visible(bool show);
    bool IsStale() const { return stale; }
    // The information button of the image window: shows or hides the right pane, kept in the
    // setting VisibleProperty.
    void OnInformation();

    ToviImageWnd* ImageWnd() const { return imageWnd; }
    ToviTabBaseWnd* TabWnd() const { return tabWnd; }
    QSplitter* Splitter() const { return splitter; }

signals:
    void VisibleChanged(bool visible);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void OnPhotoChanged();
    void OnUpdateSetup();
    void ShowInformation(bool show);
    void UpdateContent();
    void OnUpdateInformation();
    // Puts the bar at position, the right pane taking the rest.
    void PlaceBar(int position) const;

    ToviImageWnd* imageWnd;
    ToviTabBaseWnd* tabWnd;
    QSplitter* splitter;
    bool visible = false;
    bool stale = false;
    int lastWidth = 0;
    // The items shown at the last update. Only these are kept: a copy of the whole visual
    // setting would write itself back to the profile when the panel goes, over later changes.
    ToviItemShowSettings shownItems;
};

#include "dialogs/ToviDetailPanel.h"

#include "dialogs/ToviImageWnd.h"
#include "dialogs/ToviTabBaseWnd.h"
#include "document/ToviPhoto.h"
#include "platform/ToviProfile.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QResizeEvent>
#include <QSplitter>
#include <QVBoxLayout>

#include <algorithm>

const QString ToviDetailPanel::SplitterSection_ = QStringLiteral("DetailPanelSplitter");
const QString ToviDetailPanel::ImgWndWidthEntry_ = QStringLiteral("ImgWndWidth");

ToviDetailPanel::ToviDetailPanel(ToviHostDocument* document, QWidget* parent)
    : ToviPanel(parent),
      imageWnd(new ToviImageWnd(document)),
      tabWnd(new ToviTabBaseWnd(document)),
      splitter(new QSplitter(Qt::Horizontal, this)) {
    setObjectName(QStringLiteral("ToviDetailPanel"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    splitter->setObjectName(QStringLiteral("splitter"));
    splitter->setChildrenCollapsible(false);
    imageWnd->setMinimumWidth(kMinPane);
    tabWnd->setMinimumWidth(kMinPane);
    splitter->addWidget(imageWnd);
    splitter->addWidget(tabWnd);
    // The right pane keeps its width; the picture takes what the panel gains or loses.
    splitter->setStretchFactor(0, 1);
    splitter->setStretchFactor(1, 0);
    layout->addWidget(splitter);
    connect(imageWnd, &ToviImageWnd::InformationRequested, this, &ToviDetailPanel::OnInformation);
}

ToviDetailPanel::~ToviDetailPanel() {
    const QList<int> sizes = splitter->sizes();
    // Measured from the bar even when the right pane is hidden.
    const int width = sizes.size() == 2 ? splitter->width() - sizes[0] : 0;
    if (width > 0) {
        ToviProfile::Instance().WriteProfileInt(SplitterSection_, ImgWndWidthEntry_, width + 100);
    }
}

bool ToviDetailPanel::Create(QWidget* parent, int id) {
    ToviPanel::Create(parent, id);
    return true;
}

void ToviDetailPanel::AdjustSplitter() const {
    if (tabWnd->isHidden()) {
        return;
    }
    const int kept =
        ToviProfile::Instance().GetProfileInt(SplitterSection_, ImgWndWidthEntry_, -1) - 100;
    PlaceBar(kept >= 1 ? splitter->width() - kept : width() / 2 + 1);
}

void ToviDetailPanel::PlaceBar(int position) const {
    // The bar's own width comes out of the right pane.
    const int right = splitter->width() - position - splitter->handleWidth();
    splitter->setSizes({std::max(0, position), std::max(kMinPane, right)});
}

void ToviDetailPanel::resizeEvent(QResizeEvent* event) {
    ToviPanel::resizeEvent(event);
    const int w = event->size().width();
    const int w0 = lastWidth;
    const QList<int> sizes = splitter->sizes();
    const int p = sizes.isEmpty() ? 0 : sizes[0];
    if (w0 == 0) {
        lastWidth = w;
        if (p > 0) {
            return;
        }
        PlaceBar(w - kMinPane);
        return;
    }
    // The right pane keeps its width, but never below its minimum; a narrow panel leaves the
    // right pane its minimum and the picture the rest.
    int position = std::min(p - w0 + w, w - kMinPane);
    if (w < 2 * kMinPane || w < position) {
        position = w - kMinPane;
    }
    if (!tabWnd->isHidden()) {
        PlaceBar(position);
    }
    lastWidth = w;
}

void ToviDetailPanel::OnUpdate(QWidget* sender, ToviData::UpdateHint hint, QObject* object) {
    ToviPanel::OnUpdate(sender, hint, object);
    switch (hint) {
        case ToviData::HintSelectionChanged:
        case ToviData::HintPhotoSelected:
            OnPhotoChanged();
            break;
        case ToviData::HintSettingsChanged:
            OnUpdateSetup();
            break;
        default:
            break;
    }
}

void ToviDetailPanel::OnPhotoChanged() {
    if (visible) {
        UpdateContent();
    } else {
        stale = true;
    }
}

void ToviDetailPanel::UpdateContent() {
    if (!data) {
        imageWnd->SetData(nullptr);
        imageWnd->SetPhoto(nullptr);
        tabWnd->ClearContent();
        stale = false;
        return;
    }
    ToviPhoto* photo = data->GetSelectedPhoto();
    ToviItemDef* itemDef = data->GetItemDef();
    if (photo && photo->CheckExif()) {
        photo->LoadExif();
    }
    shownItems = data->GetVisualSetting().GetItemShowSettings();
    imageWnd->SetData(data);
    imageWnd->SetItemDef(itemDef);
    imageWnd->SetPhoto(photo);
    if (photo) {
        tabWnd->SetContent(photo, itemDef, shownItems);
    } else {
        tabWnd->ClearContent();
    }
    stale = false;
}

void ToviDetailPanel::OnPostAttachData() {
    if (data) {
        Visible(data->GetVisualSetting().GetVisibleDetail());
        ShowInformation(data->GetVisualSetting().GetVisibleProperty());
        // A new document shows its own photograph once the panel is seen.
        stale = true;
        if (visible) {
            UpdateContent();
        }
    } else {
        Visible(false);
        ShowInformation(false);
        imageWnd->SetData(nullptr);
        imageWnd->SetPhoto(nullptr);
        tabWnd->ClearContent();
    }
    OnUpdateInformation();
}

void ToviDetailPanel::Visible(bool show) {
    if (show == visible) {
        return;
    }
    visible = show;
    emit VisibleChanged(visible);
    if (visible && stale) {
        UpdateContent();
    }
}

void ToviDetailPanel::OnUpdateSetup() {
    if (!data) {
        return;
    }
    Visible(data->GetVisualSetting().GetVisibleDetail());
    ShowInformation(data->GetVisualSetting().GetVisibleProperty());
    OnUpdateInformation();
    const ToviItemShowSettings& current = data->GetVisualSetting().GetItemShowSettings();
    if (current == shownItems) {
        return;
    }
    shownItems = current;
    if (!visible) {
        stale = true;
        return;
    }
    ToviPhoto* photo = data->GetSelectedPhoto();
    if (data->GetTotalCountPhoto() == 0 || !photo) {
        tabWnd->ClearContent();
    } else {
        tabWnd->SetContent(photo, data->GetItemDef(), shownItems);
    }
}

void ToviDetailPanel::ShowInformation(bool show) {
    if (tabWnd->isHidden() != show) {
        return;
    }
    tabWnd->setVisible(show);
    if (show) {
        AdjustSplitter();
    }
}

void ToviDetailPanel::OnInformation() {
    if (!data) {
        return;
    }
    ToviPhotoCtrlVisualSetting setting = data->GetVisualSetting();
    setting.SetVisibleProperty(!setting.GetVisibleProperty());
    data->SetVisualSetting(setting, false);
    ShowInformation(setting.GetVisibleProperty());
    OnUpdateInformation();
}

void ToviDetailPanel::OnUpdateInformation() {
    imageWnd->SetInformationChecked(data && data->GetVisualSetting().GetVisibleProperty());
}

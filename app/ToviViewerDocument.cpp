#include "app/ToviViewerDocument.h"

#include "document/ToviData.h"
#include "loading/ToviEnouDataFactory.h"
#include "panels/ToviPanel.h"
#include "platform/Cp932.h"
#include "platform/MibFile.h"
#include "platform/ToviProgressDlg.h"
#include "platform/ToviUi.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QByteArrayMatcher>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <stdexcept>

namespace {

// The photographs a PHOTO.XML names, counted by their file-name tags without parsing, so
// that the load's progress has a range. Either encoding a delivery may be written in.
int CountPhotoTags(const QString& xmlPath) {
    QFile file(xmlPath);
    if (!file.open(QIODevice::ReadOnly)) {
        return 0;
    }
    const qint64 size = file.size();
    uchar* mapped = size > 0 ? file.map(0, size) : nullptr;
    if (!mapped) {
        return 0;
    }
    const auto* bytes = reinterpret_cast<const char*>(mapped);
    const QString tag = QStringLiteral("<写真ファイル名>");
    int best = 0;
    for (const QByteArray& pattern : {Cp932::FromUnicode(tag), tag.toUtf8()}) {
        const QByteArrayMatcher matcher(pattern);
        int count = 0;
        for (qsizetype at = matcher.indexIn(bytes, size, 0); at >= 0;
             at = matcher.indexIn(bytes, size, at + pattern.size())) {
            ++count;
        }
        best = std::max(best, count);
    }
    file.unmap(mapped);
    return best;
}

// The load's progress window: the factory reports every 50 photographs with a text that
// carries the count so far.
struct LoadProgress {
    ToviProgressDlg* dialog;
    int loaded = 0;
    bool cancelled = false;
};

bool OnLoadProgress(const ToviDataFactory*, const ToviData*, const QString& text, void* arg) {
    auto* progress = static_cast<LoadProgress*>(arg);
    progress->loaded += 50;
    progress->dialog->SetPos(progress->loaded);
    progress->dialog->SetMessage(text);
    // A load can't be stopped halfway: a cancel is remembered and the document dropped after.
    progress->cancelled = progress->dialog->GetCancel() || progress->cancelled;
    return true;
}

}  // namespace

ToviViewerDocument::ToviViewerDocument(QObject* parent) : QObject(parent) {}

ToviViewerDocument::~ToviViewerDocument() {
    Close();
}

void ToviViewerDocument::AddPanel(ToviPanel* panel) {
    if (std::find(panels.begin(), panels.end(), panel) == panels.end()) {
        panels.emplace_back(panel);
    }
}

void ToviViewerDocument::RemovePanel(ToviPanel* panel) {
    panels.erase(std::remove(panels.begin(), panels.end(), panel), panels.end());
}

void ToviViewerDocument::UpdateAllViews(QWidget* sender, int hint, QObject* object) {
    // A panel's reaction may broadcast again: walk a copy.
    const std::vector<QPointer<ToviPanel>> now = panels;
    for (const QPointer<ToviPanel>& panel : now) {
        if (panel && panel != sender) {
            panel->OnUpdate(sender, static_cast<ToviData::UpdateHint>(hint), object);
        }
    }
}

QString ToviViewerDocument::PhotoFolderOf(const QString& folder) {
    if (folder.isEmpty() || !QFileInfo(folder).isDir()) {
        return QString();
    }
    const QString path = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
    if (MibIsFileExist(MibResolveCase(path, QStringLiteral("PHOTO.XML")))) {
        return path;
    }
    const QString child = MibResolveCase(path, QStringLiteral("PHOTO"));
    if (QFileInfo(child).isDir() &&
        MibIsFileExist(MibResolveCase(child, QStringLiteral("PHOTO.XML")))) {
        return child;
    }
    return QString();
}

void ToviViewerDocument::Tell(QWidget* window, const QString& text, int icon) const {
    ToviUi::Instance().MessageBox(window, text, QString(), ToviUi::ButtonsOk,
                                  static_cast<ToviUi::Icon>(icon));
}

ToviViewerDocument::OpenResult ToviViewerDocument::Open(const QString& requested, PhotoXMLType type,
                                                        QWidget* window) {
    const QString photoFolder = PhotoFolderOf(requested);
    if (photoFolder.isEmpty()) {
        Tell(window,
             QFileInfo(requested).isDir()
                 ? QStringLiteral("フォルダ %1 は電子納品のフォルダではありません。\n"
                                  "PHOTO.XML のあるフォルダを指定してください。")
                       .arg(QDir::toNativeSeparators(requested))
                 : QStringLiteral("フォルダ %1 がありません。")
                       .arg(QDir::toNativeSeparators(requested)),
             ToviUi::IconWarning);
        return Failed;
    }

    // The family chosen is tried first. Inspectors rarely know which client's standard a
    // delivery follows, so one whose DOCTYPE that family does not know is tried under the
    // others before the failure is told; the first that knows it is taken.
    // The failure told is the one of the family chosen.
    const auto create = [this, &photoFolder](PhotoXMLType kind,
                                             std::unique_ptr<ToviEnouDataFactory>& factory,
                                             std::unique_ptr<ToviData>& data) {
        factory = std::make_unique<ToviEnouDataFactory>();
        factory->Async(true);
        try {
            data = factory->Create(this, photoFolder, kind);
        } catch (const std::out_of_range&) {
            return false;  // only a READITEM.XML whose steps don't balance walks off its list
        }
        return true;
    };
    std::unique_ptr<ToviEnouDataFactory> newFactory;
    std::unique_ptr<ToviData> newData;
    if (!create(type, newFactory, newData)) {
        Tell(window,
             QStringLiteral("項目定義ファイル READITEM.XML の構造が正しくないため読み込めません。"),
             ToviUi::IconError);
        return Failed;
    }
    PhotoXMLType used = type;
    for (int n = 1; n < 4 && newData && newData->GetErrorType() == ReadErrUnknownPhotoXml; ++n) {
        const auto other = static_cast<PhotoXMLType>((type + n) % 4);
        std::unique_ptr<ToviEnouDataFactory> factory;
        std::unique_ptr<ToviData> data;
        if (create(other, factory, data) && data &&
            data->GetErrorType() != ReadErrUnknownPhotoXml) {
            newFactory = std::move(factory);
            newData = std::move(data);
            used = other;
        }
    }
    if (!newData) {
        Tell(window, QStringLiteral("PHOTO.XML を読み込めません。"), ToviUi::IconError);
        return Failed;
    }
    if (newData->GetErrorType() != ReadErrNone) {
        Tell(window, newFactory->GetErrorTypeText(*newData) + QStringLiteral("。"),
             ToviUi::IconError);
        return Failed;
    }

    bool loaded = false;
    bool cancelled = false;
    {
        ToviProgressDlg dialog(false, window);
        dialog.SetCancelBtnEnabled(true);
        dialog.Create(window);
        dialog.SetCaption(QStringLiteral("電子納品を開いています"));
        dialog.SetRange(
            0,
            std::max(1, CountPhotoTags(MibResolveCase(photoFolder, QStringLiteral("PHOTO.XML")))));
        dialog.SetPos(0);
        dialog.SetMessage(QStringLiteral("写真データの読み込み中..."));
        LoadProgress progress{&dialog};
        try {
            loaded = newFactory->Load(OnLoadProgress, &progress);
        } catch (const std::out_of_range&) {
            loaded = false;
        }
        cancelled = progress.cancelled || dialog.GetCancel();
        dialog.DestroyWindow();
    }
    if (cancelled) {
        return Cancelled;
    }
    if (!loaded) {
        const QString why = newFactory->GetLoadError();
        Tell(window,
             why.isEmpty() ? QStringLiteral("PHOTO.XML を読み込めません。")
                           : QStringLiteral("PHOTO.XML を読み込めません。\n%1").arg(why),
             ToviUi::IconError);
        return Failed;
    }
    if (newData->GetErrorType() == ReadErrNoPhotos) {
        Tell(window,
             QStringLiteral("PHOTO.XML に写真がありません。\n（%1）")
                 .arg(QDir::toNativeSeparators(photoFolder)),
             ToviUi::IconInformation);
        return Failed;
    }

    // The one open now goes first: its settings write themselves back before the new
    // document reads them, and its combine work area is removed before a new one is made.
    Close(window);
    // The work area is this delivery's to remove at its close when its combine made it: a
    // copied disc, or later discs added to one opened in place. One that was there already
    // (another window's, or left by a killed run) is not ours to remove.
    const bool workAreaBefore = QFileInfo::exists(newFactory->CombineFolder());
    // A failed combine has told why and removed its work area.
    if (!newFactory->StartCombineProc(photoFolder, newData.get(), true, window)) {
        return Failed;
    }
    ownsWorkArea = !newFactory->CombineFolder().isEmpty() && !workAreaBefore &&
                   QFileInfo::exists(newFactory->CombineFolder());
    newData->Load();
    // A stored mode outside the seven (a hand-edited profile) would show nothing at all: it
    // opens as four photographs a page.
    const int divide = newData->GetVisualSetting().GetDivType();
    if (divide < ToviPhotoCtrlVisualSetting::Divide1 ||
        divide > ToviPhotoCtrlVisualSetting::DivideManagementList) {
        ToviPhotoCtrlVisualSetting setting = newData->GetVisualSetting();
        setting.SetDivType(ToviPhotoCtrlVisualSetting::Divide4);
        newData->SetVisualSetting(setting, false);
    }
    newData->BuildTreeNode(newData->GetVisualSetting().GetTreeType());
    factory = std::move(newFactory);
    data = std::move(newData);
    folder = photoFolder;
    family = used;
    for (const QPointer<ToviPanel>& panel : panels) {
        if (panel) {
            panel->Attach(data.get());
        }
    }
    UpdateAllViews(nullptr, ToviData::HintInitialize, nullptr);
    emit DeliveryOpened();
    return Opened;
}

void ToviViewerDocument::Close(QWidget* window) {
    if (!data) {
        return;
    }
    UpdateAllViews(nullptr, ToviData::HintDetach, nullptr);
    for (const QPointer<ToviPanel>& panel : panels) {
        if (panel) {
            panel->Detach();
        }
    }
    data.reset();
    if (factory && ownsWorkArea) {
        factory->DeleteTempData(window);
    }
    ownsWorkArea = false;
    factory.reset();
    folder.clear();
    emit DeliveryClosed();
}

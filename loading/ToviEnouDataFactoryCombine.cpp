// The media combine: a delivery spread over several discs gathered into one work area.

#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "loading/OpenNextDataTexts.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/MibFile.h"
#include "platform/ToviEnvironment.h"
#include "platform/ToviUi.h"

#include <QDir>
#include <QFileInfo>
#include <QVariantMap>

namespace {

const QString kCombineFolder = QStringLiteral("QV-CombineData");

// The drive classes a folder can lie on.
enum DriveType : unsigned { Removable = 2, Fixed = 3, Remote = 4, Optical = 5, RamDisk = 6 };

constexpr int kStatusMs = 5000;

void Tell(QWidget* parent, const QString& text, ToviUi::Icon icon) {
    ToviUi::Instance().MessageBox(parent, text, QString(), ToviUi::ButtonsOk, icon);
}

}  // namespace

QString ToviEnouDataFactory::CombineFolder() const {
    const QString suite = ToviEnvironment::SuiteFolder();
    return suite.isEmpty() ? QString() : suite + kCombineFolder;
}

QString ToviEnouDataFactory::CombinePhotoFolder() const {
    const QString folder = CombineFolder();
    return folder.isEmpty() ? QString() : folder + QStringLiteral("/PHOTO");
}

void ToviEnouDataFactory::DeleteTempData(QWidget* parent) {
    const QString folder = CombineFolder();
    if (folder.isEmpty() || !MibIsFolderExist(folder)) {
        return;
    }
    ToviUi& ui = ToviUi::Instance();
    ui.BeginWait(parent, OpenNextDataTexts::Deleting(), OpenNextDataTexts::kDeleteAnimation);
    MibRemoveDirectory(folder);
    ui.EndWait();
}

bool ToviEnouDataFactory::StartCombineProc(const QString& path, ToviData* document,
                                           bool rebuildPaths, QWidget* parent) {
    ToviUi& ui = ToviUi::Instance();
    QString next = path;
    bool rebuild = rebuildPaths;
    bool anyCopied = false;
    // One disc after another: a later disc only adds what is still missing.
    for (;; rebuild = false) {
        QString source = next;
        QString universal;
        if (ToviGetUniversalName(next, universal, true)) {
            source = universal;
        }
        bool copied = false;
        QString dataFolder;
        const unsigned type = ToviGetDriveType(source);
        if (type == Fixed || type == Remote || type == RamDisk) {
            dataFolder = source;
        } else if (type != Removable && type != Optical) {
            Tell(parent, OpenNextDataTexts::BadFolder(), ToviUi::IconWarning);
            return false;
        } else {
            const QString combine = CombineFolder();
            const QString photos = CombinePhotoFolder();
            if (!combine.isEmpty()) {
                MibCreateDirectory(photos);
                // The files beside the photo folder (the index file, the DTDs) come along,
                // replacing those of the disc before.
                const QFileInfoList beside =
                    QDir(MibParentDir(source))
                        .entryInfoList(QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot);
                for (const QFileInfo& file : beside) {
                    if (!file.isSymLink()) {
                        MibCopyFileEx(file.filePath(), MibNormalDir(combine) + file.fileName(),
                                      true);
                    }
                }
            }
            ui.BeginWait(parent, OpenNextDataTexts::Copying(), OpenNextDataTexts::kCopyAnimation);
            const bool ok = !combine.isEmpty() && MibCopyDirectoryTree(source, photos);
            ui.EndWait();
            if (!ok) {
                Tell(parent, OpenNextDataTexts::CopyFailed(), ToviUi::IconWarning);
                DeleteTempData(parent);
                return false;
            }
            dataFolder = photos;
            copied = true;
            anyCopied = true;
        }
        dataFolderPath = dataFolder;

        document->RootPath(dataFolder);
        document->GetItemDef()->SetRootPath(dataFolder);
        document->Title(dataFolder);
        // Each photograph is checked once, its files looked up in listings of PIC/ and DRA/
        // made for this disc; the names still missing are gathered in the photographs' order.
        QStringList missing;
        const int count = document->GetTotalCountPhoto();
        for (int i = 0; i < count; ++i) {
            ToviPhoto* photo = document->GetPhotoActualPhotoArray(i);
            if (copied && rebuild) {
                photo->ClearImagePath();
            }
            if (!photo->IsExistFile()) {
                photo->UpdateImagePath();
            }
            if (!photo->IsExistFile()) {
                photo->GetOutputFilename(missing);
            }
        }
        if (missing.isEmpty()) {
            // After a copy from removable media the inspector is told in a box that the discs
            // may go; a delivery opened in place only gets a passing word, as deliveries are
            // opened all day.
            if (anyCopied) {
                Tell(parent, OpenNextDataTexts::Complete(), ToviUi::IconInformation);
            } else {
                ui.ShowStatus(
                    parent,
                    OpenNextDataTexts::Complete().replace(QLatin1Char('\n'), QLatin1Char(' ')),
                    kStatusMs);
            }
            return true;
        }

        // The next folder must hold a PHOTO.XML; the dialog is asked again until it does.
        QString folder = next;
        for (;;) {
            QVariantMap values{{OpenNextDataTexts::MessageField(), OpenNextDataTexts::Message()},
                               {OpenNextDataTexts::FolderField(), folder},
                               {OpenNextDataTexts::ListLabelField(),
                                OpenNextDataTexts::ListLabel(static_cast<int>(missing.size()))},
                               {OpenNextDataTexts::MissingField(), missing}};
            if (!ui.RunDialog(parent, OpenNextDataTexts::DialogName(), values)) {
                return true;
            }
            folder = values.value(OpenNextDataTexts::FolderField()).toString();
            if (!folder.isEmpty() &&
                MibIsFileExist(MibResolveCase(MibNormalDir(folder), QStringLiteral("PHOTO.XML")))) {
                break;
            }
            Tell(parent, OpenNextDataTexts::NoPhotoXml(), ToviUi::IconWarning);
        }
        next = folder;
    }
}

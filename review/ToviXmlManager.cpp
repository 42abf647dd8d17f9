#include "review/ToviXmlManager.h"

#include "document/ToviPhoto.h"
#include "document/ToviPhotoArray.h"
#include "platform/Cp932.h"
#include "platform/ToviProgressDlg.h"

#include <QFileInfo>
#include <QStorageInfo>

#include <array>

namespace {

const QByteArray kRootTag = QByteArrayLiteral("検査状況");
const QByteArray kCountTag = QByteArrayLiteral("写真枚数");
const QByteArray kStatusTag = QByteArrayLiteral("状況");

qint64 VolumeFreeBytes(const QString& folder) {
    const QStorageInfo volume(folder.isEmpty() ? QStringLiteral(".") : folder);
    return volume.isValid() ? volume.bytesFree() : -1;
}

ToviXmlSaveManager::FreeSpaceProbe& FreeSpace() {
    static ToviXmlSaveManager::FreeSpaceProbe probe = VolumeFreeBytes;
    return probe;
}

// A missing file and a file whose mode grants no one write permission: the attribute's
// meaning, so the answer is the same for every user, root included.
bool IsReadOnlyFile(const QFileInfo& info) {
    const QFile::Permissions write = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
    return (info.permissions() & write) == 0;
}

}  // namespace

QString ToviExamResultText(int result) {
    switch (result) {
        case ExamReadOnly:
            return QStringLiteral("検査状況ファイルが読み取り専用のため保存できません");
        case ExamNoSpace:
            return QStringLiteral("ディスクの空き容量が足りないため検査状況を保存できません");
        case ExamSaveFailed:
            return QStringLiteral("検査状況ファイルを書き込めませんでした");
        case ExamCancelled:
            return QStringLiteral("検査状況の保存を中止しました");
        case ExamCountWrong:
            return QStringLiteral(
                "検査状況ファイルを読めないか、写真枚数がこの電子納品と合いません");
        case ExamNoStatus:
            return QStringLiteral("検査状況ファイルに写真の状況がありません");
        default:
            return QStringLiteral("検査状況を処理できませんでした");
    }
}

ToviXmlManager::ToviXmlManager(const QString& path, const QString& rootPath)
    : path(path), rootPath(rootPath) {}

ToviXmlManager::~ToviXmlManager() = default;

const QString& ToviXmlManager::LabelTag(int label) {
    static const std::array<QString, 6> tags{
        QStringLiteral("付箋1-OK"),  QStringLiteral("付箋2-NG1"),      QStringLiteral("付箋3-NG2"),
        QStringLiteral("付箋4-NG3"), QStringLiteral("付箋5-コメント"), QStringLiteral("付箋6-任意"),
    };
    return tags.at(static_cast<size_t>(label));
}

bool ToviXmlManager::FindElement(DoxIterator& it, const QByteArray& tag) {
    if (!it.Root()) {
        return false;
    }
    while (!it.IsTag(tag)) {
        if (!it.Next()) {
            return false;
        }
    }
    return true;
}

ToviXmlHeaderManager::ToviXmlHeaderManager() {
    // One declaration and the document type line, kept by the tree and written back by
    // Save; the root stands in from the start.
    document.Initiate();
    const QString seed = QStringLiteral(
                             "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n"
                             "<!DOCTYPE examinationdata SYSTEM \"\">\n<") +
                         QString::fromUtf8(kRootTag) + QStringLiteral("/>\n");
    if (document.LoadFromBytes(Cp932::FromUnicode(seed))) {
        iterator = std::make_unique<DoxIterator>(&document);
    }
}

ToviXmlSaveManager::ToviXmlSaveManager(const QString& path, const QString& note,
                                       const QString& rootPath)
    : ToviXmlManager(path, rootPath), note(note) {
    iterator = header.iterator.get();
}

void ToviXmlSaveManager::SetFreeSpaceProbeForTesting(FreeSpaceProbe probe) {
    FreeSpace() = probe ? probe : VolumeFreeBytes;
}

bool ToviXmlSaveManager::Save(ToviPhotoArray& photos, int* result) {
    const auto fail = [result](int code) {
        if (result) {
            *result = code;
        }
        return false;
    };
    const QFileInfo target(path);
    qint64 existing = 0;
    if (target.exists()) {
        if (IsReadOnlyFile(target)) {
            return fail(ExamReadOnly);
        }
        existing = target.size();
    }
    const int count = static_cast<int>(photos.size());
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    const QString folder = slash > 0 ? path.left(slash) : QString();
    const qint64 free = FreeSpace()(folder);
    // About 300 bytes a photograph and 500 for the frame, whatever the comments' length.
    if (free >= 0 && free + existing <= 500 + 300 * static_cast<qint64>(count)) {
        return fail(ExamNoSpace);
    }
    if (!iterator) {
        return fail(ExamSaveFailed);
    }
    DoxIterator& it = *iterator;
    if (!it.Root() || !it.InsertChild(QString::fromUtf8("情報")) ||
        !it.InsertChild(QString::fromUtf8(kCountTag)) || !it.SetText(QString::number(count)) ||
        !it.Parent() || !it.Parent() || !it.InsertChild(QString::fromUtf8(kStatusTag))) {
        return fail(ExamSaveFailed);
    }
    if (!FindElement(it, kStatusTag)) {
        return fail(ExamSaveFailed);
    }

    ToviProgressDlg progress(true, nullptr);
    progress.OpenForLoop(count, true);
    const QString messageHead = QStringLiteral("検査状況出力中　");
    const QString messageTail = QStringLiteral(" / ") + QString::number(count);
    const QString photoTag = QStringLiteral("写真");
    const QString pathTag = QStringLiteral("写真ファイルパス");
    const QString commentTag = QStringLiteral("コメント");
    const QString one = QStringLiteral("1");
    const QString zero = QStringLiteral("0");
    for (int index = 0; index < count; ++index) {
        ToviPhoto* photo = photos[index];
        it.InsertChild(photoTag);
        if (writePath) {
            it.InsertChild(pathTag);
            it.SetText(photo->GetImagePath());
            it.Parent();
        }
        it.InsertChild(commentTag);
        it.SetText(photo->GetComment());
        it.Parent();
        for (int label = 0; label < ToviPhoto::kLabelCount; ++label) {
            it.InsertChild(LabelTag(label));
            it.SetText(photo->IsLabelPasted(static_cast<unsigned>(label)) ? one : zero);
            it.Parent();
        }
        it.Parent();
        progress.SetMessage(messageHead + QString::number(index + 1) + messageTail);
        if (progress.GetCancel()) {
            progress.DestroyWindow();
            return fail(ExamCancelled);  // nothing has reached the file
        }
        progress.StepIt();
    }
    progress.DestroyWindow();
    // Written in one step through a temporary file renamed over the target: a failure or a
    // kill at any moment leaves the previous record as it was.
    if (!header.document.Save(path)) {
        return fail(ExamSaveFailed);
    }
    return true;
}

ToviXmlLoadManager::ToviXmlLoadManager(const QString& path, const QString& rootPath)
    : ToviXmlManager(path, rootPath) {
    document.Initiate();
    owned = std::make_unique<DoxIterator>(&document);
    iterator = owned.get();
    // A file that can't be read leaves an empty tree: the count is then not found.
    document.Load(path);
}

bool ToviXmlLoadManager::Load(ToviPhotoArray& photos, int* result) {
    const auto fail = [result](int code) {
        if (result) {
            *result = code;
        }
        return false;
    };
    DoxIterator& it = *iterator;
    if (!FindElement(it, kCountTag)) {
        return fail(ExamCountWrong);
    }
    // Read as a scan for a decimal number would: leading blanks, a sign, the digits; no
    // digits read as 0.
    const QString text = it.GetText().trimmed();
    qsizetype end = 0;
    if (end < text.size() && (text[end] == QLatin1Char('-') || text[end] == QLatin1Char('+'))) {
        ++end;
    }
    while (end < text.size() && text[end].isDigit() && text[end].unicode() < 0x80) {
        ++end;
    }
    bool ok = false;
    const qlonglong written = text.left(end).toLongLong(&ok);
    const int count = static_cast<int>(photos.size());
    if ((ok ? written : 0) != count) {
        return fail(ExamCountWrong);
    }
    if (!FindElement(it, kStatusTag) || !it.Child()) {
        return fail(ExamNoStatus);
    }

    ToviProgressDlg progress(true, nullptr);
    progress.OpenForLoop(count, false);
    const QString messageHead = QStringLiteral("検査状況読み込み中　");
    const QString messageTail = QStringLiteral(" / ") + QString::number(count);
    std::array<QByteArray, ToviPhoto::kLabelCount> labelTags;
    for (int label = 0; label < ToviPhoto::kLabelCount; ++label) {
        labelTags[static_cast<size_t>(label)] = LabelTag(label).toUtf8();
    }
    const QByteArray commentTag = QByteArrayLiteral("コメント");
    QString value;
    for (int index = 0; index < count; ++index) {
        ToviPhoto* photo = photos[index];
        if (it.Child()) {
            do {
                if (it.IsTag(commentTag)) {
                    it.GetText(value);
                    photo->SetComment(value);
                    continue;
                }
                for (int label = 0; label < ToviPhoto::kLabelCount; ++label) {
                    if (it.IsTag(labelTags[static_cast<size_t>(label)])) {
                        it.GetText(value);
                        if (value == QLatin1String("0")) {
                            photo->RemoveLabel(static_cast<unsigned>(label));
                        } else if (value == QLatin1String("1")) {
                            photo->PasteLabel(static_cast<unsigned>(label));
                        }
                        break;
                    }
                }
            } while (it.NextSibling());
            it.Parent();
        }
        it.NextSibling();  // past the last 写真 it stays there, and later ones read it again
        progress.SetMessage(messageHead + QString::number(index + 1) + messageTail);
        progress.StepIt();
    }
    progress.DestroyWindow();
    return true;
}

#include "checks/ToviFileChecks.h"

#include "checks/ToviCheckContext.h"
#include "document/ToviData.h"
#include "document/ToviPhoto.h"

#include <QFileInfo>
#include <QHash>
#include <QSet>

#include <algorithm>

namespace {

const char kNamePattern[] = "file.name-pattern";
const char kMissing[] = "file.missing";
const char kCaseMismatch[] = "file.case-mismatch";
const char kSpecial[] = "file.special";
const char kShared[] = "file.shared";
const char kStray[] = "file.stray";

const QString kPic = QStringLiteral("PIC");
const QString kDra = QStringLiteral("DRA");

// One file a photograph names: where (PIC or DRA), its name as written and the element.
struct NamedFile {
    const QString* folder;
    QString name;
    QString item;
};

// Calls f for every file the photograph at index names, empty values left out.
template <typename F>
void ForEachFile(const ToviCheckContext& context, const ToviFileItems& items, int index, F&& f) {
    for (const ToviItem& it : context.Photo(index).GetItems()) {
        const bool isPhoto = items.photo.contains(it.GetDefIndex());
        if ((!isPhoto && !items.drawing.contains(it.GetDefIndex())) || it.Value().isEmpty()) {
            continue;
        }
        f(NamedFile{isPhoto ? &kPic : &kDra, it.Value(),
                    context.DefinitionTitle(it.GetDefIndex())});
    }
}

}  // namespace

void ToviFileItems::Find(const ToviCheckContext& context) {
    photo.clear();
    drawing.clear();
    for (const int i : context.DefinitionsTitled(QStringLiteral("写真ファイル名"))) {
        photo.insert(i);
    }
    for (const char* title : {"参考図ファイル名", "参考図1", "参考図2", "参考図3"}) {
        for (const int i : context.DefinitionsTitled(QString::fromUtf8(title))) {
            drawing.insert(i);
        }
    }
}

// ---- names ------------------------------------------------------------------------------------

QList<const char*> ToviFileNameCheck::Codes() const {
    return {kNamePattern};
}

const ToviFileNameCheck::NamingRule& ToviFileNameCheck::RuleFor(int /*family*/) {
    // One row for every generation: "P" or "D", seven digits and ".JPG", upper case, as the
    // file names of the delivery examples stand (P0000001.JPG, D0000001.JPG). The notes on
    // the standards kept with the project say nothing of file naming, so no generation gets a
    // variant of its own until one is found in a source; SVG and TIFF forms are left out for
    // the same reason.
    static const NamingRule kEveryGeneration{
        "every generation",
        QRegularExpression(QStringLiteral("^P[0-9]{7}\\.JPG$")),
        QRegularExpression(QStringLiteral("^D[0-9]{7}\\.JPG$")),
    };
    return kEveryGeneration;
}

void ToviFileNameCheck::Begin(ToviCheckContext& context) {
    items.Find(context);
    rule = &RuleFor(context.Document().GetItemDef()->GetXMLType());
}

void ToviFileNameCheck::CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) {
    ForEachFile(context, items, index, [&](const NamedFile& file) {
        const bool isPhoto = file.folder == &kPic;
        const QRegularExpression& pattern = isPhoto ? rule->photo : rule->drawing;
        if (pattern.match(file.name).hasMatch()) {
            return;
        }
        sink.Add(ToviCheckFinding::Of(
            kNamePattern, ToviCheckFinding::Warning, index,
            *file.folder + QLatin1Char('/') + file.name, file.item,
            QStringLiteral("%1「%2」が命名規則 (%3 のように大文字の %4、"
                           "7 桁の数字、.JPG) に従っていません")
                .arg(file.item, file.name,
                     QString::fromLatin1(isPhoto ? "P0000001.JPG" : "D0000001.JPG"),
                     QLatin1String(isPhoto ? "P" : "D"))));
    });
}

// ---- presence ---------------------------------------------------------------------------------

QList<const char*> ToviFilePresenceCheck::Codes() const {
    return {kMissing, kCaseMismatch, kSpecial, kShared};
}

void ToviFilePresenceCheck::Begin(ToviCheckContext& context) {
    items.Find(context);
    context.Folder(kPic, &picName);
    context.Folder(kDra, &draName);
    // A link is followed only when it stays inside its own folder, as the viewer reads them.
    const auto area = [&](const QString& name) {
        const QString real = QFileInfo(context.PhotoFolder() + name).canonicalFilePath();
        return real.isEmpty() ? QString() : real + QLatin1Char('/');
    };
    picArea = area(picName);
    draArea = area(draName);
    photoOwners.clear();
    photoOwners.reserve(context.PhotoCount());
}

void ToviFilePresenceCheck::CheckPhoto(ToviCheckContext& context, int index,
                                       ToviFindingSink& sink) {
    const MibPathResolver::Listing& pic = context.Folder(kPic);
    const MibPathResolver::Listing& dra = context.Folder(kDra);
    ForEachFile(context, items, index, [&](const NamedFile& file) {
        const bool isPhoto = file.folder == &kPic;
        const QString relative = *file.folder + QLatin1Char('/') + file.name;
        const auto add = [&](const char* code, ToviCheckFinding::Severity severity,
                             const QString& message) {
            sink.Add(ToviCheckFinding::Of(code, severity, index, relative, file.item, message));
        };
        if (isPhoto) {
            const QString folded = file.name.toCaseFolded();
            const auto first = photoOwners.constFind(folded);
            if (first == photoOwners.cend()) {
                photoOwners.insert(folded, index);
            } else {
                add(kShared, ToviCheckFinding::Error,
                    QStringLiteral("写真ファイル %1 は写真 %2 も指しています")
                        .arg(file.name)
                        .arg(*first));
            }
        }
        const MibPathResolver::Listing& listing = isPhoto ? pic : dra;
        // A name with a folder in it is no entry of the folder, whatever it points at.
        const bool plain =
            !file.name.contains(QLatin1Char('/')) && !file.name.contains(QLatin1Char('\\'));
        QString onDisc = file.name;
        auto entry = plain ? listing.entries.constFind(onDisc) : listing.entries.cend();
        if (plain && entry == listing.entries.cend()) {
            onDisc = listing.Folded().value(file.name.toCaseFolded());
            if (!onDisc.isEmpty()) {
                entry = listing.entries.constFind(onDisc);
                add(kCaseMismatch, ToviCheckFinding::Warning,
                    QStringLiteral("%1「%2」のファイルは大文字・小文字の違う「%3」として"
                                   "あります")
                        .arg(file.item, file.name, onDisc));
            }
        }
        if (entry == listing.entries.cend()) {
            add(kMissing, ToviCheckFinding::Error,
                QStringLiteral("%1「%2」のファイルが %3 フォルダにありません")
                    .arg(file.item, file.name, *file.folder));
            return;
        }
        if (*entry == MibPathResolver::Listing::File) {
            return;
        }
        const QString path =
            context.PhotoFolder() + (isPhoto ? picName : draName) + QLatin1Char('/') + onDisc;
        if (*entry == MibPathResolver::Listing::Other) {
            add(kSpecial, ToviCheckFinding::Error,
                QStringLiteral("%1「%2」は通常のファイルではありません (フォルダ、FIFO、"
                               "デバイスなど)。開かずに飛ばしました")
                    .arg(file.item, file.name));
            return;
        }
        // A link: where it leads, by name alone.
        const QString target = QFileInfo(path).canonicalFilePath();
        if (target.isEmpty()) {
            add(kMissing, ToviCheckFinding::Error,
                QStringLiteral("%1「%2」はリンクですが、リンク先のファイルがありません")
                    .arg(file.item, file.name));
        } else if (const QString& inside = isPhoto ? picArea : draArea;
                   inside.isEmpty() || !target.startsWith(inside)) {
            add(kSpecial, ToviCheckFinding::Error,
                QStringLiteral("%1「%2」は %3 フォルダの外 (%4) を指すリンクです。"
                               "開かずに飛ばしました")
                    .arg(file.item, file.name, *file.folder, target));
        } else if (!QFileInfo(target).isFile()) {
            add(kSpecial, ToviCheckFinding::Error,
                QStringLiteral("%1「%2」のリンク先は通常のファイルではありません。"
                               "開かずに飛ばしました")
                    .arg(file.item, file.name));
        }
    });
}

// ---- files to read ----------------------------------------------------------------------------

void ToviReadableFiles::Begin(ToviCheckContext& context) {
    context.Folder(kPic, &picName);
    context.Folder(kDra, &draName);
    const auto area = [&](const QString& name) {
        const QString real = QFileInfo(context.PhotoFolder() + name).canonicalFilePath();
        return real.isEmpty() ? QString() : real + QLatin1Char('/');
    };
    picArea = area(picName);
    draArea = area(draName);
}

QString ToviReadableFiles::PathOf(ToviCheckContext& context, bool photo,
                                  const QString& name) const {
    if (name.isEmpty() || name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\'))) {
        return QString();
    }
    const MibPathResolver::Listing& listing = context.Folder(photo ? kPic : kDra);
    QString onDisc = name;
    auto entry = listing.entries.constFind(onDisc);
    if (entry == listing.entries.cend()) {
        onDisc = listing.Folded().value(name.toCaseFolded());
        entry = onDisc.isEmpty() ? listing.entries.cend() : listing.entries.constFind(onDisc);
    }
    if (entry == listing.entries.cend() || *entry == MibPathResolver::Listing::Other) {
        return QString();
    }
    const QString path =
        context.PhotoFolder() + (photo ? picName : draName) + QLatin1Char('/') + onDisc;
    if (*entry == MibPathResolver::Listing::File) {
        return path;
    }
    const QString target = QFileInfo(path).canonicalFilePath();
    const QString& inside = photo ? picArea : draArea;
    if (target.isEmpty() || inside.isEmpty() || !target.startsWith(inside) ||
        !QFileInfo(target).isFile()) {
        return QString();
    }
    return target;
}

// ---- stray files ------------------------------------------------------------------------------

QList<const char*> ToviStrayFileCheck::Codes() const {
    return {kStray};
}

void ToviStrayFileCheck::Begin(ToviCheckContext& context) {
    items.Find(context);
    pics.clear();
    dras.clear();
}

void ToviStrayFileCheck::CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink&) {
    ForEachFile(context, items, index, [&](const NamedFile& file) {
        (file.folder == &kPic ? pics : dras).insert(file.name.toCaseFolded());
    });
}

void ToviStrayFileCheck::Finish(ToviCheckContext& context, ToviFindingSink& sink) {
    for (const auto& [folder, named] : {std::pair{&kPic, &pics}, std::pair{&kDra, &dras}}) {
        QString onDisc;
        const MibPathResolver::Listing& listing = context.Folder(*folder, &onDisc);
        QStringList strays;
        for (auto it = listing.entries.cbegin(); it != listing.entries.cend(); ++it) {
            if (!named->contains(it.key().toCaseFolded())) {
                strays.append(it.key());
            }
        }
        std::sort(strays.begin(), strays.end());
        for (const QString& name : strays) {
            sink.Add(ToviCheckFinding::Of(
                kStray, ToviCheckFinding::Error, -1, onDisc + QLatin1Char('/') + name, QString(),
                QStringLiteral("%1 フォルダの「%2」は PHOTO.XML のどの写真にも"
                               "指定されていません")
                    .arg(onDisc, name)));
        }
    }
}

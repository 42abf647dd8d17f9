// tovi exam: shows an inspection record as the document takes it up.
// tovi label: pastes and removes labels, sets comments, and saves the record.

#include "cli/CliCommon.h"
#include "cli/JsonWriter.h"

#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "document/ToviPhotoArray.h"
#include "platform/Cp932.h"
#include "review/ToviXmlManager.h"

#include <QFileInfo>

namespace {

// Takes "--record FILE" out of args.
bool TakeRecord(QStringList& args, QString& record, const char* command) {
    const qsizetype at = args.indexOf(QStringLiteral("--record"));
    if (at < 0 || at + 1 >= args.size()) {
        PrintError(QStringLiteral("tovi %1: --record に検査状況ファイルを指定してください")
                       .arg(QLatin1String(command)));
        return false;
    }
    record = args[at + 1];
    args.remove(at, 2);
    return true;
}

bool LoadRecord(ToviData& document, const QString& record) {
    int result = -1;
    if (!document.LoadExamination(record, &result)) {
        PrintError(ToviExamResultText(result));
        return false;
    }
    return true;
}

void PrintRecordJson(ToviData& document) {
    JsonWriter json;
    json.BeginObject();
    json.Key("photos");
    json.BeginArray();
    const ToviPhotoArray& photos = *document.GetPhotoDataArray();
    for (qsizetype index = 0; index < photos.size(); ++index) {
        const ToviPhoto* photo = photos[index];
        json.BeginObject();
        json.Key("index");
        json.Value(static_cast<int>(index));
        json.Key("comment");
        json.Value(photo->GetComment());
        json.Key("labels");
        json.BeginArray();
        for (int label = 0; label < ToviPhoto::kLabelCount; ++label) {
            if (photo->IsLabelPasted(static_cast<unsigned>(label))) {
                json.Value(label);
            }
        }
        json.EndArray();
        json.EndObject();
    }
    json.EndArray();
    json.EndObject();
    json.Finish();
}

QByteArray RecordText(ToviData& document) {
    QString text;
    const ToviPhotoArray& photos = *document.GetPhotoDataArray();
    for (qsizetype index = 0; index < photos.size(); ++index) {
        const ToviPhoto* photo = photos[index];
        QString labels;
        for (int label = 0; label < ToviPhoto::kLabelCount; ++label) {
            labels += photo->IsLabelPasted(static_cast<unsigned>(label)) ? QString::number(label)
                                                                         : QStringLiteral("-");
        }
        QString comment = photo->GetComment();
        comment.replace(QLatin1Char('\n'), QStringLiteral("\\n"));
        text += QStringLiteral("%1  %2  %3\n").arg(index, 5).arg(labels, comment);
    }
    return text.toUtf8();
}

struct LabelChange {
    int index;
    int label;
    bool paste;
};

struct CommentChange {
    int index;
    QString text;
};

}  // namespace

int RunExam(QStringList args) {
    QString record;
    if (!TakeRecord(args, record, "exam")) {
        return ExitUsage;
    }
    OpenOptions options;
    if (!ParseOpenOptions(args, options, "exam")) {
        return ExitUsage;
    }
    if (!args.isEmpty()) {
        PrintError(QStringLiteral("tovi exam: 不明な引数 %1").arg(args.first()));
        return ExitUsage;
    }
    std::unique_ptr<ToviData> document = OpenDelivery(options);
    if (!document) {
        return ExitNotLoaded;
    }
    if (!LoadRecord(*document, record)) {
        return ExitNotLoaded;
    }
    if (options.json) {
        PrintRecordJson(*document);
    } else {
        PrintOut(RecordText(*document));
    }
    return ExitOk;
}

int RunLabel(QStringList args) {
    QString record;
    if (!TakeRecord(args, record, "label")) {
        return ExitUsage;
    }
    QList<LabelChange> labels;
    QList<CommentChange> comments;
    bool withPaths = false;
    QStringList rest;
    const QString command = QStringLiteral("label");
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        if (a == QLatin1String("--with-paths")) {
            withPaths = true;
        } else if (a == QLatin1String("--paste") || a == QLatin1String("--remove")) {
            const QStringList parts =
                i + 1 < args.size() ? args[++i].split(QLatin1Char(':')) : QStringList();
            LabelChange change{0, 0, a == QLatin1String("--paste")};
            if (parts.size() != 2) {
                PrintError(
                    QStringLiteral("tovi label: %1 には 写真番号:付箋番号 を指定してください")
                        .arg(a));
                return ExitUsage;
            }
            if (!ParseIntOption(command, a, parts[0], 0, INT_MAX, change.index) ||
                !ParseIntOption(command, a, parts[1], 0, ToviPhoto::kLabelCount - 1,
                                change.label)) {
                return ExitUsage;
            }
            labels.append(change);
        } else if (a == QLatin1String("--comment")) {
            const QString pair = i + 1 < args.size() ? args[++i] : QString();
            const qsizetype eq = pair.indexOf(QLatin1Char('='));
            CommentChange change{0, pair.mid(eq + 1)};
            if (eq <= 0) {
                PrintError(QStringLiteral(
                    "tovi label: --comment には 写真番号=コメント を指定してください"));
                return ExitUsage;
            }
            if (!ParseIntOption(command, a, pair.left(eq), 0, INT_MAX, change.index)) {
                return ExitUsage;
            }
            // The record is Shift_JIS: a comment it cannot hold is refused before anything
            // changes, rather than failing the save of every other label and comment.
            if (const QString bad = Cp932::Unencodable(change.text); !bad.isEmpty()) {
                PrintError(
                    QStringLiteral("tovi label: コメントに Shift_JIS で表せない文字があります: %1")
                        .arg(bad));
                return ExitUsage;
            }
            comments.append(change);
        } else {
            rest.append(a);
        }
    }
    OpenOptions options;
    if (!ParseOpenOptions(rest, options, "label")) {
        return ExitUsage;
    }
    if (!rest.isEmpty()) {
        PrintError(QStringLiteral("tovi label: 不明な引数 %1").arg(rest.first()));
        return ExitUsage;
    }
    std::unique_ptr<ToviData> document = OpenDelivery(options);
    if (!document) {
        return ExitNotLoaded;
    }
    if (QFileInfo::exists(record) && !LoadRecord(*document, record)) {
        return ExitNotLoaded;
    }
    const int count = document->GetTotalCountPhoto();
    const auto photoAt = [&](int index) -> ToviPhoto* {
        ToviPhoto* photo = document->GetPhotoActualPhotoArray(index);
        if (!photo) {
            PrintError(QStringLiteral("tovi label: 写真番号 %1 はありません (0 から %2)")
                           .arg(index)
                           .arg(count - 1));
        }
        return photo;
    };
    for (const LabelChange& change : labels) {
        ToviPhoto* photo = photoAt(change.index);
        if (!photo) {
            return ExitUsage;
        }
        if (change.paste) {
            photo->PasteLabel(static_cast<unsigned>(change.label));
        } else {
            photo->RemoveLabel(static_cast<unsigned>(change.label));
        }
    }
    for (const CommentChange& change : comments) {
        ToviPhoto* photo = photoAt(change.index);
        if (!photo) {
            return ExitUsage;
        }
        photo->SetComment(change.text);
    }
    int result = -1;
    const bool saved = withPaths ? document->ReturnExam(record, &result)
                                 : document->SaveExamination(record, QString(), &result);
    if (!saved) {
        PrintError(ToviExamResultText(result));
        return ExitNotLoaded;
    }
    return ExitOk;
}

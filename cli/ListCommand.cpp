#include "cli/CliCommon.h"
#include "cli/JsonWriter.h"

#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "extraction/ToviSorter.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"

#include <QRegularExpression>

bool ParseTreeType(QStringList& args, int& type, const char* command);

namespace {

struct ListOptions {
    int type = 0;
    QString nodePath;  // child positions such as "0/2/1"; empty for the root
    int label = -1;
    ToviExtractionConditions conditions;
    int itemCount = 0;
    QString sortKey;
    bool descending = false;
};

bool Usage(const QString& line) {
    PrintError(QStringLiteral("tovi list: ") + line);
    return false;
}

// Takes the list options out of args; what remains is for ParseOpenOptions.
bool ParseListOptions(QStringList& args, ListOptions& list) {
    static const QRegularExpression kDate(QStringLiteral("^\\d{4}-\\d{2}-\\d{2}$"));
    QStringList rest;
    bool nodeGiven = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        const bool hasValue = i + 1 < args.size();
        const auto value = [&]() { return args[++i]; };
        ToviExtractionConditions& c = list.conditions;
        if (a == QLatin1String("--node")) {
            if (!hasValue) {
                return Usage(
                    QStringLiteral("--node には子の位置を 0/2/1 のように指定してください"));
            }
            list.nodePath = value();
            static const QRegularExpression kPath(QStringLiteral("^\\d+(/\\d+)*$"));
            bool inRange = true;
            for (const QString& step : list.nodePath.split(QLatin1Char('/'))) {
                step.toInt(&inRange);
                if (!inRange) {
                    break;
                }
            }
            if (!kPath.match(list.nodePath).hasMatch() || !inRange) {
                return Usage(
                    QStringLiteral("--node には子の位置を 0/2/1 のように指定してください"));
            }
            nodeGiven = true;
        } else if (a == QLatin1String("--label")) {
            if (!hasValue ||
                !ParseIntOption(QStringLiteral("list"), a, value(), 0, 5, list.label)) {
                return hasValue
                           ? false
                           : Usage(QStringLiteral("--label には 0 から 5 の数を指定してください"));
            }
        } else if (a == QLatin1String("--key-photo")) {
            c.keyPhoto = true;
        } else if (a == QLatin1String("--ng")) {
            c.ngPhoto = true;
        } else if (a == QLatin1String("--not-checked")) {
            c.notcheckPhoto = true;
        } else if (a == QLatin1String("--no-exif")) {
            c.notExifinfo = true;
        } else if (a == QLatin1String("--required-missing")) {
            c.neceNotwrite = true;
        } else if (a == QLatin1String("--item")) {
            const QString pair = hasValue ? value() : QString();
            const qsizetype eq = pair.indexOf(QLatin1Char('='));
            if (eq <= 0) {
                return Usage(QStringLiteral("--item には 項目名=値 を指定してください"));
            }
            if (list.itemCount == ToviExtractionConditions::kItemCount) {
                return Usage(QStringLiteral("--item は 3 つまでです"));
            }
            c.itemOn[list.itemCount] = true;
            c.itemTitle[list.itemCount] = pair.left(eq);
            c.itemText[list.itemCount] = pair.mid(eq + 1);
            ++list.itemCount;
        } else if (a == QLatin1String("--date")) {
            const QStringList range =
                hasValue ? value().split(QStringLiteral("..")) : QStringList();
            if (range.size() != 2 || !kDate.match(range[0]).hasMatch() ||
                !kDate.match(range[1]).hasMatch()) {
                return Usage(
                    QStringLiteral("--date には YYYY-MM-DD..YYYY-MM-DD を指定してください"));
            }
            c.dateOn = true;
            c.dateFrom = range[0];
            c.dateTo = range[1];
        } else if (a == QLatin1String("--date-kind")) {
            if (!hasValue) {
                return Usage(QStringLiteral("--date-kind には 0 か 1 を指定してください"));
            }
            if (!ParseIntOption(QStringLiteral("list"), a, value(), 0, 1, c.dateKind)) {
                return false;
            }
        } else if (a == QLatin1String("--or")) {
            c.orMode = 1;
        } else if (a == QLatin1String("--sort")) {
            if (!hasValue) {
                return Usage(QStringLiteral("--sort には項目名を指定してください"));
            }
            list.sortKey = value();
        } else if (a == QLatin1String("--desc")) {
            list.descending = true;
        } else {
            rest.append(a);
        }
    }
    if (nodeGiven && list.label >= 0) {
        return Usage(QStringLiteral("--node と --label は同時に指定できません"));
    }
    args = rest;
    return true;
}

ToviNode* NodeAt(ToviNode* root, const QString& path) {
    ToviNode* node = root;
    if (path.isEmpty()) {
        return node;
    }
    for (const QString& step : path.split(QLatin1Char('/'))) {
        const int position = step.toInt();
        if (position < 0 || position >= node->GetChildNodeCount()) {
            return nullptr;
        }
        node = node->GetNode(position);
    }
    return node;
}

}  // namespace

int RunList(QStringList args) {
    ListOptions list;
    OpenOptions options;
    if (!ParseTreeType(args, list.type, "list") || !ParseListOptions(args, list) ||
        !ParseOpenOptions(args, options, "list")) {
        return ExitUsage;
    }
    if (!args.isEmpty()) {
        PrintError(QStringLiteral("tovi list: 不明な引数 %1").arg(args.first()));
        return ExitUsage;
    }
    std::unique_ptr<ToviData> document = OpenDelivery(options);
    if (!document) {
        return ExitNotLoaded;
    }
    document->BuildTreeNode(list.type);

    ToviExtractionHolder holder;
    holder.conditions = list.conditions;
    if (list.label >= 0) {
        document->SetSelected(list.label);
    } else {
        ToviNode* node = NodeAt(document.get(), list.nodePath);
        if (!node) {
            PrintError(QStringLiteral("tovi list: 分類ツリーに位置 %1 のノードがありません")
                           .arg(list.nodePath));
            return ExitUsage;
        }
        document->SetSelected(node, false);
        if (holder.conditions.AnyOn()) {
            document->SetExtractionData(&holder);
            document->ExecExtraction();
            document->SetExtractionData(nullptr);
        }
    }
    if (!list.sortKey.isEmpty()) {
        // Sorted here rather than through the document's own condition, which is the user's
        // saved setting and must not change because of one listing.
        ToviSorter sorter(document.get());
        sorter.PrepareSort(list.sortKey, document->CurrentArray());
        sorter.QuickSort(!list.descending, document->CurrentArray());
    }

    const int titleIndex =
        document->GetItemDef()->GetIndexFromEnum(ToviPhotoCtrlVisualSetting::TitlePhotoTitle);
    const ToviPhotoRef& current = document->CurrentArray();
    if (options.json) {
        JsonWriter json;
        json.BeginObject();
        json.Key("current");
        json.BeginArray();
        for (int index : current) {
            json.Value(index);
        }
        json.EndArray();
        json.Key("titles");
        json.BeginArray();
        for (int index : current) {
            json.Value(document->GetPhotoActualPhotoArray(index)->GetTitle(titleIndex));
        }
        json.EndArray();
        json.EndObject();
        json.Finish();
    } else {
        QString text = QStringLiteral("%1枚\n").arg(current.size());
        for (int index : current) {
            ToviPhoto* photo = document->GetPhotoActualPhotoArray(index);
            text += QStringLiteral("%1  %2  %3\n")
                        .arg(index, 6)
                        .arg(photo->GetImagePath().section(QLatin1Char('/'), -1),
                             photo->GetTitle(titleIndex));
        }
        PrintOut(text.toUtf8());
    }
    return ExitOk;
}

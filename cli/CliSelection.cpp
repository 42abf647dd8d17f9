#include "cli/CliSelection.h"

#include "cli/CliCommon.h"

#include "document/ToviData.h"
#include "extraction/ToviSorter.h"
#include "review/ToviXmlManager.h"

#include <QRegularExpression>

namespace {

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

bool ParseSelectionOptions(QStringList& args, SelectionOptions& list, const char* command,
                           bool withRecord) {
    const QString name = QString::fromUtf8(command);
    const auto Usage = [&](const QString& line) {
        PrintError(QStringLiteral("tovi %1: ").arg(name) + line);
        return false;
    };
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
                !ParseIntOption(name, a, value(), 0, 5, list.label)) {
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
            if (!ParseIntOption(name, a, value(), 0, 1, c.dateKind)) {
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
        } else if (withRecord && a == QLatin1String("--record")) {
            if (!hasValue) {
                return Usage(QStringLiteral("--record に検査状況ファイルを指定してください"));
            }
            list.record = value();
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

int ApplySelection(ToviData& document, const SelectionOptions& selection, const char* command) {
    document.BuildTreeNode(selection.type);
    if (!selection.record.isEmpty()) {
        int result = -1;
        if (!document.LoadExamination(selection.record, &result)) {
            PrintError(ToviExamResultText(result));
            return ExitNotLoaded;
        }
    }
    ToviExtractionHolder holder;
    holder.conditions = selection.conditions;
    if (selection.label >= 0) {
        document.SetSelected(selection.label);
    } else {
        ToviNode* node = NodeAt(&document, selection.nodePath);
        if (!node) {
            PrintError(QStringLiteral("tovi %1: 分類ツリーに位置 %2 のノードがありません")
                           .arg(QString::fromUtf8(command), selection.nodePath));
            return ExitUsage;
        }
        document.SetSelected(node, false);
        if (holder.conditions.AnyOn()) {
            document.SetExtractionData(&holder);
            document.ExecExtraction();
            document.SetExtractionData(nullptr);
        }
    }
    if (!selection.sortKey.isEmpty()) {
        // Sorted here rather than through the document's own condition, which is the user's
        // saved setting and must not change because of one command.
        ToviSorter sorter(&document);
        sorter.PrepareSort(selection.sortKey, document.CurrentArray());
        sorter.QuickSort(!selection.descending, document.CurrentArray());
    }
    return ExitOk;
}

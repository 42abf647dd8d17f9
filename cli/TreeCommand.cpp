#include "cli/CliCommon.h"
#include "cli/CliSelection.h"
#include "cli/JsonWriter.h"

#include "document/ToviData.h"

namespace {

void NodeJson(JsonWriter& json, const ToviNode& node) {
    json.BeginObject();
    json.Key("title");
    json.Value(node.Title());
    json.Key("indexes");
    json.BeginArray();
    for (int index : node.Indexes()) {
        json.Value(index);
    }
    json.EndArray();
    json.Key("children");
    json.BeginArray();
    for (const ToviNode* child : node.Items()) {
        NodeJson(json, *child);
    }
    json.EndArray();
    json.EndObject();
}

void NodeText(QString& text, const ToviNode& node, int depth) {
    QList<int> all;
    node.GetAllUnder(all);
    text += QString(depth * 2, QLatin1Char(' ')) + node.Title() +
            QStringLiteral("  (%1枚)\n").arg(all.size());
    for (const ToviNode* child : node.Items()) {
        NodeText(text, *child, depth + 1);
    }
}

}  // namespace

bool ParseTreeType(QStringList& args, int& type, const char* command) {
    const qsizetype at = args.indexOf(QStringLiteral("--type"));
    if (at < 0) {
        return true;
    }
    if (at + 1 >= args.size() ||
        !ParseIntOption(QString::fromUtf8(command), QStringLiteral("--type"), args[at + 1], 0, 2,
                        type)) {
        if (at + 1 >= args.size()) {
            PrintError(QStringLiteral("tovi %1: --type には 0 から 2 の数を指定してください")
                           .arg(QString::fromUtf8(command)));
        }
        return false;
    }
    args.remove(at, 2);
    return true;
}

int RunTree(QStringList args) {
    OpenOptions options;
    int type = 0;
    if (!ParseTreeType(args, type, "tree") || !ParseOpenOptions(args, options, "tree")) {
        return ExitUsage;
    }
    if (!args.isEmpty()) {
        PrintError(QStringLiteral("tovi tree: 不明な引数 %1").arg(args.first()));
        return ExitUsage;
    }
    std::unique_ptr<ToviData> document = OpenDelivery(options);
    if (!document) {
        return ExitNotLoaded;
    }
    document->BuildTreeNode(type);
    if (options.json) {
        JsonWriter json;
        NodeJson(json, *document);
        json.Finish();
    } else {
        QString text;
        NodeText(text, *document, 0);
        PrintOut(text.toUtf8());
    }
    return ExitOk;
}

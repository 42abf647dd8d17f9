#include "checks/ToviItemChecks.h"

#include "checks/ToviCheckContext.h"
#include "document/ToviData.h"
#include "document/ToviPhoto.h"

namespace {

const char kRequired[] = "item.required";
const char kValue[] = "item.value";
const char kTooLong[] = "item.too-long";

const QString kMajor = QStringLiteral("写真-大分類");
const QString kCategory = QStringLiteral("写真区分");
const QString kSubmission = QStringLiteral("提出頻度写真");
const QString kWorks = QStringLiteral("工事");
// The categories shot by work type (see Rules).
const char kWorkTypes[] = "施工状況写真 使用材料写真 品質管理写真 出来形管理写真";

QStringList Words(const char* list) {
    return QString::fromUtf8(list).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

QSet<int> Definitions(const ToviCheckContext& context, const QString& title) {
    QSet<int> set;
    for (const int index : context.DefinitionsTitled(title)) {
        set.insert(index);
    }
    return set;
}

// The generation of the delivery, as the item definitions name it ("国交省-20").
QString Section(const ToviCheckContext& context) {
    return context.Document().GetItemDef()->NewType();
}

}  // namespace

// ---- required items ---------------------------------------------------------------------------

// The works categories of 写真区分 (着手前及び完成写真 … その他). Listed as the 工事写真分類
// that municipal delivery rules copy from the MLIT デジタル写真管理情報基準, e.g. 南アルプス市
// 「工事写真の電子納品要領」 第4
// (https://paperzz.com/doc/5907497/); the notes in brackets there ("その他(公害、環境、補償、
// 事故写真等)") describe a category and are not part of its value.
const QList<ToviRequiredItemCheck::ValueList>& ToviRequiredItemCheck::CategoryValues() {
    static const QList<ValueList> kLists{
        {"国交省-14 国交省-16 国交省-20", "工事",
         "着手前及び完成写真 施工状況写真 安全管理写真 使用材料写真 品質管理写真 出来形管理写真 "
         "災害写真 その他"},
    };
    // No list of 写真-大分類 values was found in a source, so that item is not checked.
    return kLists;
}

const QList<ToviRequiredItemCheck::Rule>& ToviRequiredItemCheck::Rules() {
    // What each row rests on:
    //
    // 写真区分, 国交省 H14.7 and H16.6 (PHOTO02/03): 条件付き必須, written when 写真-大分類 is
    //   工事 and free text otherwise. NILIM Q&A on デジタル写真管理情報基準(案), P-55
    //   (2003-05-20), https://www.nilim.go.jp/japanese/denshi/calsec/q_a/q_a05.htm; the answer
    //   stands unchanged in the Q&A collection of 2005-02 (H16.6 edition in force).
    // 写真区分, 国交省 H20.5 and later (PHOTO05): the edition's table 「写真区分ごとの記入可否の
    //   目安」 (H20.5, p.5) sets what each works category needs, so a works photograph has a
    //   category; see http://const.livedoor.biz/archives/51706488.html.
    // 工種, 種別, 細別, 国交省 H20.5 and later: written for works photographs that are
    //   提出頻度写真 (1), as far as that table asks. 着手前及び完成写真 and 災害写真 need none of
    //   the three even then: blank there is proper data by that table, as two site engineers'
    //   notes of 2009 quoting it say (http://const.livedoor.biz/archives/51706488.html,
    //   http://culgon.doorblog.jp/archives/51300378.html). No copy of the table itself was at
    //   hand, so which other categories need them is this program's reading: the four that
    //   the shooting list of the 写真管理基準 orders by work type (施工状況, 使用材料, 品質管理,
    //   出来形管理). 安全管理写真 and その他 are left out, no source putting them on either
    //   side. A photograph with 提出頻度写真 0 needs none of them. 種別 and 細別 are needed
    //   only where the work breakdown has them under the 工種 (種別) named: many 工種 have none,
    //   and the breakdown is not part of the delivery, so a missing one is a note once the
    //   level above it is named, never an error.
    // 工種, 種別, 細別, NEXCO H24.7 (PHOTO04): every category needs all three, except that
    //   着手前写真 and その他写真 need none and 完成写真 needs 工種 only. NEXCO FAQ 534
    //   (2021-09-30) on the 工事記録写真等撮影要領 H24.7, pp.44-45,
    //   https://faq.trueteller.net/nexco/web/faq/detail.asp?FAQID=534. Kept to works
    //   photographs, as the edition is about works.
    //
    // 国交省 H11 (no 提出頻度写真) and H18.1, and the 農水省 generations: no source was found
    // for their conditions, so they have no rows.
    static const QList<Rule> kRules{
        {"国交省-14 国交省-16 国交省-20", "写真区分", "工事", "", AnyCategory, ""},
        {"国交省-20", "工種", "工事", "1", Among, kWorkTypes},
        {"国交省-20", "種別", "工事", "1", Among, kWorkTypes, ToviCheckFinding::Note, "工種"},
        {"国交省-20", "細別", "工事", "1", Among, kWorkTypes, ToviCheckFinding::Note, "種別"},
        {"NEXCO-24", "工種", "工事", "", Outside, "着手前写真 その他写真"},
        {"NEXCO-24", "種別", "工事", "", Outside, "着手前写真 完成写真 その他写真"},
        {"NEXCO-24", "細別", "工事", "", Outside, "着手前写真 完成写真 その他写真"},
    };
    return kRules;
}

QList<const char*> ToviRequiredItemCheck::Codes() const {
    return {kRequired, kValue};
}

void ToviRequiredItemCheck::Begin(ToviCheckContext& context) {
    const QString section = Section(context);
    rules.clear();
    wanted.clear();
    for (const Rule& rule : Rules()) {
        if (Words(rule.sections).contains(section)) {
            const QString item = QString::fromUtf8(rule.item);
            const QString given = QString::fromUtf8(rule.given);
            rules.append({item, QString::fromUtf8(rule.major), QString::fromUtf8(rule.submission),
                          rule.test, Words(rule.categories), rule.severity, given});
            wanted.unite(Definitions(context, item));
            if (!given.isEmpty()) {
                wanted.unite(Definitions(context, given));
            }
        }
    }
    valueLists.clear();
    for (const ValueList& list : CategoryValues()) {
        if (Words(list.sections).contains(section)) {
            valueLists.append({QString::fromUtf8(list.major), Words(list.values)});
        }
    }
    roles.clear();
    for (const auto& [title, role] :
         {std::pair{kMajor, MajorRole}, {kCategory, CategoryRole}, {kSubmission, SubmissionRole}}) {
        for (const int def : context.DefinitionsTitled(title)) {
            roles[def] |= role;
        }
    }
    for (const int def : wanted) {
        roles[def] |= WantedRole;
    }
}

void ToviRequiredItemCheck::CheckPhoto(ToviCheckContext& context, int index,
                                       ToviFindingSink& sink) {
    if (rules.isEmpty() && valueLists.isEmpty()) {
        return;
    }
    QString major, category, submission;
    QStringList filled;  // titles of the wanted items that hold a value
    for (const ToviItem& it : context.Photo(index).GetItems()) {
        const int def = it.GetDefIndex();
        const unsigned role = roles.value(def);
        if (role == 0) {
            continue;
        }
        const QString value = it.Value().trimmed();
        if (role & MajorRole) {
            major = value;
        }
        if (role & CategoryRole) {
            category = value;
        }
        if (role & SubmissionRole) {
            submission = value;
        }
        if ((role & WantedRole) && !value.isEmpty()) {
            filled.append(context.DefinitionTitle(def));
        }
    }
    for (const ActiveRule& rule : rules) {
        if (major != rule.major || (!rule.submission.isEmpty() && submission != rule.submission)) {
            continue;
        }
        // Without a 写真区分 a rule that turns on it cannot be judged; the missing category is
        // reported by its own row.
        if (rule.test != AnyCategory &&
            (category.isEmpty() || rule.categories.contains(category) != (rule.test == Among))) {
            continue;
        }
        if (filled.contains(rule.item) || (!rule.given.isEmpty() && !filled.contains(rule.given))) {
            continue;
        }
        if (rule.severity == ToviCheckFinding::Note) {
            sink.Add(ToviCheckFinding::Of(
                kRequired, rule.severity, index, rule.item,
                QStringLiteral("%1が記入されていません。写真区分が「%2」の提出頻度写真で"
                               "は、工種体系で%3の下に%1があれば記入が必要です")
                    .arg(rule.item, category, rule.given)));
            continue;
        }
        QString why = QStringLiteral("写真-大分類が「%1」").arg(major);
        if (!category.isEmpty() && rule.item != kCategory) {
            why += QStringLiteral("、写真区分が「%1」").arg(category);
        }
        if (!rule.submission.isEmpty()) {
            why += QStringLiteral("、提出頻度写真が %1").arg(submission);
        }
        sink.Add(ToviCheckFinding::Of(
            kRequired, ToviCheckFinding::Error, index, rule.item,
            QStringLiteral("%1の写真には%2が必要ですが、記入されていません").arg(why, rule.item)));
    }
    for (const ActiveList& list : valueLists) {
        if (major == list.major && !category.isEmpty() && !list.values.contains(category)) {
            sink.Add(ToviCheckFinding::Of(
                kValue, ToviCheckFinding::Warning, index, kCategory,
                QStringLiteral("写真区分「%1」は写真-大分類「%2」の写真区分 (%3) "
                               "のどれでもありません")
                    .arg(category, major, list.values.join(QStringLiteral("、")))));
        }
    }
}

// ---- lengths ----------------------------------------------------------------------------------

const QList<ToviLengthCheck::Limit>& ToviLengthCheck::Limits() {
    // 写真区分, 国交省 H14.7 and H16.6: 全角 16 characters. NILIM Q&A P-55 (2003-05-20),
    //   https://www.nilim.go.jp/japanese/denshi/calsec/q_a/q_a05.htm, in force through the Q&A
    //   collection of 2005-02.
    // 写真タイトル, 国交省 PHOTO05 (the current edition, R5.3): 127 characters. Taken as the
    //   current edition's item table gives it; no public copy of that table was at hand to
    //   confirm the figure, nor the figures of the other items of the table.
    //
    // No limit was found in a source for the other items, for 国交省 H11 and H18.1, for the
    // 農水省 and NEXCO generations, nor a fixed form (digits of a stated length) for
    // シリアル番号 and メディア番号; those are not checked.
    static const QList<Limit> kLimits{
        {"国交省-14 国交省-16", "写真区分", 16},
        {"国交省-20", "写真タイトル", 127},
    };
    return kLimits;
}

int ToviLengthCheck::Length(const QString& value) {
    int count = 0;
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (!value[i].isLowSurrogate() || i == 0 || !value[i - 1].isHighSurrogate()) {
            ++count;
        }
    }
    return count;
}

QList<const char*> ToviLengthCheck::Codes() const {
    return {kTooLong};
}

void ToviLengthCheck::Begin(ToviCheckContext& context) {
    limits.clear();
    const QString section = Section(context);
    for (const Limit& limit : Limits()) {
        if (Words(limit.sections).contains(section)) {
            for (const int def : context.DefinitionsTitled(QString::fromUtf8(limit.item))) {
                limits.insert(def, &limit);
            }
        }
    }
}

void ToviLengthCheck::CheckItems(const ToviCheckContext&, const ToviItemArray& items, int index,
                                 ToviFindingSink& sink) const {
    for (const ToviItem& it : items) {
        const Limit* limit = limits.value(it.GetDefIndex());
        // A value of no more UTF-16 units than the limit has no more characters either.
        if (!limit || it.Value().size() <= limit->most) {
            continue;
        }
        const int length = Length(it.Value());
        if (length <= limit->most) {
            continue;
        }
        const QString item = QString::fromUtf8(limit->item);
        sink.Add(
            ToviCheckFinding::Of(kTooLong, ToviCheckFinding::Error, index, item,
                                 QStringLiteral("%1が %2 文字あり、上限の %3 文字を超えています")
                                     .arg(item)
                                     .arg(length)
                                     .arg(limit->most)));
    }
}

void ToviLengthCheck::CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) {
    if (!limits.isEmpty()) {
        CheckItems(context, context.Photo(index).GetItems(), index, sink);
    }
}

void ToviLengthCheck::Finish(ToviCheckContext& context, ToviFindingSink& sink) {
    if (!limits.isEmpty()) {
        CheckItems(context, *context.Document().GetMngItemPhoto(), -1, sink);
    }
}

#pragma once

#include "checks/ToviDeliveryCheck.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

class ToviItemArray;

// The checks of what the items of a photograph must hold by the standard its delivery
// follows: the items its classification makes required, the values a list fixes, and the
// lengths. Every rule is a row of data with its source; a generation without a row is not
// checked for that rule. An element left out and an element left empty are the same here.

// Which of 写真区分, 工種, 種別 and 細別 a photograph needs, by its 写真-大分類, 写真区分 and
// 提出頻度写真; and 写真区分 against the list of values the standard gives for works
// photographs.
class ToviRequiredItemCheck : public ToviDeliveryCheck {
public:
    // One requirement: in the generations listed, item must hold a value when the
    // photograph's 写真-大分類 is major, its 提出頻度写真 is submission (any when empty) and its
    // 写真区分 is one of categories (Among) or none of them (Outside). Lists are separated by
    // spaces; generations are the item-definition sections ("国交省-20"). A rule with a given
    // item applies only once that item holds a value (種別 once 工種 is named); its severity
    // says how sure the rule is.
    enum CategoryTest { AnyCategory, Among, Outside };
    struct Rule {
        const char* sections;
        const char* item;
        const char* major;
        const char* submission;
        CategoryTest test;
        const char* categories;
        ToviCheckFinding::Severity severity = ToviCheckFinding::Error;
        const char* given = "";
    };
    // The values 写真区分 takes when 写真-大分類 is major, in the generations listed.
    struct ValueList {
        const char* sections;
        const char* major;
        const char* values;
    };
    static const QList<Rule>& Rules();
    static const QList<ValueList>& CategoryValues();

    QList<const char*> Codes() const override;
    void Begin(ToviCheckContext& context) override;
    void CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) override;

private:
    // A rule or value list of the delivery's generation, its lists split.
    struct ActiveRule {
        QString item, major, submission;
        CategoryTest test;
        QStringList categories;
        ToviCheckFinding::Severity severity;
        QString given;
    };
    struct ActiveList {
        QString major;
        QStringList values;
    };
    QList<ActiveRule> rules;
    QList<ActiveList> valueLists;
    // What the definitions the check reads are: 写真-大分類, 写真区分, 提出頻度写真, and an item
    // some rule of the generation requires.
    enum Role : unsigned { MajorRole = 1, CategoryRole = 2, SubmissionRole = 4, WantedRole = 8 };
    QHash<int, unsigned> roles;  // definition index -> roles
    QSet<int> wanted;
};

// Values longer than the standard allows for their item in the delivery's generation. Every
// limit found so far is given in 全角 characters, so a limit counts characters (one for each,
// whatever its width), not bytes.
class ToviLengthCheck : public ToviDeliveryCheck {
public:
    struct Limit {
        const char* sections;  // separated by spaces
        const char* item;
        int most;  // characters
    };
    static const QList<Limit>& Limits();
    // The characters of value; one beyond the BMP counts once.
    static int Length(const QString& value);

    QList<const char*> Codes() const override;
    void Begin(ToviCheckContext& context) override;
    void CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) override;
    // The management items (基礎情報), which belong to no photograph.
    void Finish(ToviCheckContext& context, ToviFindingSink& sink) override;

private:
    void CheckItems(const ToviCheckContext& context, const ToviItemArray& items, int index,
                    ToviFindingSink& sink) const;
    QHash<int, const Limit*> limits;  // definition index -> its limit in this generation
};

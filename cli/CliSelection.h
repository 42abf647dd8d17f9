#pragma once

#include "extraction/ToviExtractionConditions.h"

#include <QString>
#include <QStringList>

class ToviData;

// The photographs a command works on, as tovi list chooses them: a tree and a node or a
// label, extraction conditions, a sort; and for the commands that take one, the inspection
// record whose labels and comments the photographs carry.
struct SelectionOptions {
    int type = 0;
    QString nodePath;  // child positions such as "0/2/1"; empty for the root
    int label = -1;
    ToviExtractionConditions conditions;
    int itemCount = 0;
    QString sortKey;
    bool descending = false;
    QString record;  // empty: none
};

// Takes "--type N" out of args.
bool ParseTreeType(QStringList& args, int& type, const char* command);
// Takes the selection options (and "--record FILE" when withRecord) out of args; what remains
// is for ParseOpenOptions. On a usage error prints one line naming the option.
bool ParseSelectionOptions(QStringList& args, SelectionOptions& selection, const char* command,
                           bool withRecord = false);
// Builds the tree, loads the record, and makes the chosen photographs the document's current
// array in the chosen order. Answers ExitOk, or the exit code after printing why not.
int ApplySelection(ToviData& document, const SelectionOptions& selection, const char* command);

#pragma once

#include "checks/ToviDeliveryCheck.h"

#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QString>

class ToviCheckContext;

// The checks of the files PHOTO.XML names in PIC/ (photographs) and DRA/ (reference
// drawings). None of them opens a file: the folders are listed and links are followed by
// name only, so that a FIFO or a device in a delivery can never hold the run up.

// The elements that name files: 写真ファイル名 in PIC/; 参考図ファイル名 (and the three
// 参考図 slots of the oldest 国交省 generation) in DRA/.
struct ToviFileItems {
    QSet<int> photo;    // definition indexes
    QSet<int> drawing;  // definition indexes
    void Find(const ToviCheckContext& context);
};

// Where the checks that read files find a named file: only an ordinary file inside its folder,
// directly or through a link that stays inside, as ToviFilePresenceCheck accepts it. Whatever
// else a name leads to (nothing, a FIFO, a device, a folder, a place outside) that check
// reports, and nothing opens it.
class ToviReadableFiles {
public:
    void Begin(ToviCheckContext& context);
    // The path to open for name in PIC/ (photo) or DRA/, found regardless of case; empty when
    // there is nothing that may be opened.
    QString PathOf(ToviCheckContext& context, bool photo, const QString& name) const;

private:
    QString picName, draName;  // the folders as the disc spells them
    QString picArea, draArea;  // their real places, ending in '/'; empty when missing
};

// The names of the photographs and drawings against the naming rule.
class ToviFileNameCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    void Begin(ToviCheckContext& context) override;
    void CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) override;

    struct NamingRule {
        const char* generations;  // which generations the row holds for
        QRegularExpression photo;
        QRegularExpression drawing;
    };
    // The rule for a kind of delivery (PhotoXMLType).
    static const NamingRule& RuleFor(int family);

private:
    ToviFileItems items;
    const NamingRule* rule = nullptr;
};

// Every named file is there as an ordinary file inside its folder, spelt as named, and no two
// photographs name one file.
class ToviFilePresenceCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    void Begin(ToviCheckContext& context) override;
    void CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) override;

private:
    ToviFileItems items;
    QString picName, draName;         // the folders as the disc spells them
    QString picArea, draArea;         // their real places, ending in '/'; empty when missing
    QHash<QString, int> photoOwners;  // case-folded photograph file -> first photograph
};

// Files in PIC/ and DRA/ that PHOTO.XML does not name (Thumbs.db, desktop.ini, copies).
class ToviStrayFileCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    void Begin(ToviCheckContext& context) override;
    void CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) override;
    void Finish(ToviCheckContext& context, ToviFindingSink& sink) override;

private:
    ToviFileItems items;
    QSet<QString> pics, dras;  // case-folded names the photographs give
};

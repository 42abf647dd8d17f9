#pragma once

#include "checks/ToviDeliveryCheck.h"

#include <QRegularExpression>
#include <QString>

// The checks of the files PHOTO.XML names in PIC/ (photographs) and DRA/ (reference
// drawings). None of them opens a file: the folders are listed and links are followed by
// name only, so that a FIFO or a device in a delivery can never hold the run up.

// The names of the photographs and drawings against the naming rule.
class ToviFileNameCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    void Run(ToviCheckContext& context, ToviFindingSink& sink) override;

    struct NamingRule {
        const char* generations;  // which generations the row holds for
        QRegularExpression photo;
        QRegularExpression drawing;
    };
    // The rule for the document's kind of delivery.
    static const NamingRule& RuleFor(int family);
};

// Every named file is there as an ordinary file inside the delivery, spelt as named, and no
// two photographs name one file.
class ToviFilePresenceCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    void Run(ToviCheckContext& context, ToviFindingSink& sink) override;
};

// Files in PIC/ and DRA/ that PHOTO.XML does not name (Thumbs.db, desktop.ini, copies).
class ToviStrayFileCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    void Run(ToviCheckContext& context, ToviFindingSink& sink) override;
};

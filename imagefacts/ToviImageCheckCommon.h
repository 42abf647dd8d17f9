#pragma once

#include "imagefacts/ToviCheckProcessor.h"

#include <QList>
#include <QString>

#include <memory>
#include <vector>

// The tamper check of a document: the chain of verifiers the user chose, in the chosen
// order, and the file the next check concerns.
class ToviImageCheckCommon {
public:
    // The camera types the user chooses among (the numbers EditCheckTypes stores).
    enum CameraType {
        CameraRicohG600 = 0,   // the maker's verifier
        CameraBlackboard = 1,  // the hash checker, for electronic blackboards
        CameraRicohG900 = 2,   // the hash checker as well
    };

    // The document passes an empty file.
    explicit ToviImageCheckCommon(const QString& file = QString());
    virtual ~ToviImageCheckCommon();
    ToviImageCheckCommon(const ToviImageCheckCommon&) = delete;
    ToviImageCheckCommon& operator=(const ToviImageCheckCommon&) = delete;

    // Rebuilds the chain: 0 makes the maker's verifier, 1 and 2 a hash checker each, greater
    // numbers nothing. A verifier whose library can't be found or loaded is left out silently.
    void SetCheckCameraType(const QList<int>& types);
    // Keeps the stored path when path differs from it in case only.
    void SetFile(const QString& path);
    const QString& GetFile() const { return file; }
    // Runs the chain on the stored file: the first verifier that claims the file and finds it
    // unaltered or altered decides; an "outside target" of the maker's verifier stops the
    // chain; otherwise the last claimed answer stands. An empty chain is StatusError.
    // claimed, when given, tells whether any verifier took the file at all (StatusError
    // stands for both "nobody could judge it" and "it broke a verifier").
    ToviCheckProcessor::CheckStatus CheckProcessedImage(bool* claimed = nullptr);
    int GetProcessorCount() const { return static_cast<int>(processors.size()); }

    // The type at a position of the selection list: 0, 2, then 1 for any other index. The list
    // order differs from the numeric order on purpose.
    static CameraType QueryCameraType(int index);
    // The name the user sees for a type; empty for a number outside the list.
    static QString QueryCameraName(const CameraType& type);

protected:
    // Hooks around a check; nothing calls them.
    virtual bool Begin() { return true; }
    virtual void End() {}

private:
    QString file;
    std::vector<std::unique_ptr<ToviCheckProcessor>> processors;
};

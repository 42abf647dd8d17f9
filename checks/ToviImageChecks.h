#pragma once

#include "checks/ToviDateTable.h"
#include "checks/ToviDeliveryCheck.h"
#include "checks/ToviFileChecks.h"

#include <QByteArray>
#include <QString>

#include <memory>

class ToviImageCheckCommon;

// The checks that open the photographs and drawings (left out with --no-images). They open
// only what ToviReadableFiles hands them, so a FIFO, a device or a link leading out of the
// delivery is never opened; the file checks report those.

// Each named file is what its extension says (read from its first bytes), reads as a picture
// (its header, and a decode at the decoder's smallest scale, never a whole one), and a
// photograph's pixel count lies within the guidance of its generation where there is one.
class ToviImageFileCheck : public ToviDeliveryCheck {
public:
    enum class Format { None, Jpeg, Tiff, Png, Gif, Bmp, Svg, Other };

    // decode false reads headers only (the benchmark's measure of the header checks).
    explicit ToviImageFileCheck(bool decode = true) : decode(decode) {}

    QList<const char*> Codes() const override;
    bool ReadsImages() const override { return true; }
    void Begin(ToviCheckContext& context) override;
    void CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) override;

    // What the first bytes of a file say it is; None for an empty file.
    static Format Sniff(const QByteArray& head);
    // What a file name's extension promises; Other for an extension that names no picture
    // format the checks know (the naming check reports such names).
    static Format Promised(const QString& name);
    static QString FormatName(Format format);

    // A range of pixel counts a standard recommends for photographs.
    struct PixelGuidance {
        const char* generations;
        qint64 low;
        qint64 high;
        const char* wording;  // as the source puts it
    };
    // The guidance for a kind of delivery (PhotoXMLType); null where no source gives one.
    static const PixelGuidance* GuidanceFor(int family);

private:
    void CheckFile(ToviCheckContext& context, int index, bool photo, const QString& name,
                   const QString& item, ToviFindingSink& sink);

    bool decode;
    ToviFileItems items;
    ToviReadableFiles files;
    const PixelGuidance* guidance = nullptr;
};

// 撮影年月日 against the Exif original date and against the file's modification time: more
// than a day apart is a warning naming both. A photograph without an Exif date gets a note.
class ToviShotDateCheck : public ToviDeliveryCheck {
public:
    QList<const char*> Codes() const override;
    bool ReadsImages() const override { return true; }
    void Begin(ToviCheckContext& context) override;
    void CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) override;

private:
    ToviDateItems items;
    ToviReadableFiles files;
};

// The tamper verifiers' answer on every photograph: an altered one is an error, one a
// verifier took but could not judge a note. Without any verifier library one note says so
// for the whole delivery. The chain is the check's own, so that the run may go on a worker
// thread while the viewer verifies what it shows (the verifiers guard what they share).
class ToviTamperCheck : public ToviDeliveryCheck {
public:
    ToviTamperCheck();
    ~ToviTamperCheck() override;

    QList<const char*> Codes() const override;
    bool ReadsImages() const override { return true; }
    void Begin(ToviCheckContext& context) override;
    void CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) override;
    void Finish(ToviCheckContext& context, ToviFindingSink& sink) override;

private:
    ToviFileItems items;
    ToviReadableFiles files;
    std::unique_ptr<ToviImageCheckCommon> chain;
};

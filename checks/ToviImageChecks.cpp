#include "checks/ToviImageChecks.h"

#include "checks/ToviCheckContext.h"
#include "checks/ToviDateTable.h"
#include "document/ToviData.h"
#include "document/ToviItemDef.h"
#include "document/ToviPhoto.h"
#include "imagefacts/ToviImageCheckCommon.h"
#include "platform/LumJpegFacts.h"
#include "platform/MibFile.h"

#include <QFile>
#include <QImageReader>

#include <cstdlib>
#include <cstring>

namespace {

const char kFormat[] = "image.format";
const char kDecode[] = "image.decode";
const char kSize[] = "image.size";
const char kExifMismatch[] = "date.exif-mismatch";
const char kFileMismatch[] = "date.file-mismatch";
const char kNoExif[] = "date.no-exif";
const char kEdited[] = "tamper.edited";
const char kUnknown[] = "tamper.unknown";
const char kUnavailable[] = "tamper.unavailable";

// Calls f(photo, name, item) for every file the photograph names, empty names left out.
template <typename F>
void ForEachNamed(const ToviCheckContext& context, const ToviFileItems& items, int index, F&& f) {
    for (const ToviItem& it : context.Photo(index).GetItems()) {
        const bool photo = items.photo.contains(it.GetDefIndex());
        if ((!photo && !items.drawing.contains(it.GetDefIndex())) || it.Value().isEmpty()) {
            continue;
        }
        f(photo, it.Value(), context.DefinitionTitle(it.GetDefIndex()));
    }
}

QString Relative(bool photo, const QString& name) {
    return (photo ? QStringLiteral("PIC/") : QStringLiteral("DRA/")) + name;
}

// The decoder's smallest scale that it does without a whole decode: an eighth.
QSize EighthOf(const QSize& size) {
    return QSize(qMax(1, size.width() / 8), qMax(1, size.height() / 8));
}

}  // namespace

// ---- format, decoding and size ----------------------------------------------------------------

QList<const char*> ToviImageFileCheck::Codes() const {
    return {kFormat, kDecode, kSize};
}

ToviImageFileCheck::Format ToviImageFileCheck::Sniff(const QByteArray& head) {
    const auto starts = [&](const char* bytes, int n) {
        return head.size() >= n && std::memcmp(head.constData(), bytes, size_t(n)) == 0;
    };
    if (head.isEmpty()) {
        return Format::None;
    }
    if (starts("\xFF\xD8\xFF", 3)) {
        return Format::Jpeg;
    }
    if (starts("II*\0", 4) || starts("MM\0*", 4)) {
        return Format::Tiff;
    }
    if (starts("\x89PNG\r\n\x1A\n", 8)) {
        return Format::Png;
    }
    if (starts("GIF87a", 6) || starts("GIF89a", 6)) {
        return Format::Gif;
    }
    if (starts("BM", 2)) {
        return Format::Bmp;
    }
    // An SVG drawing: markup (after a byte-order mark, an XML declaration, comments or a
    // DOCTYPE) whose root is svg, near the start.
    QByteArray text = head.startsWith("\xEF\xBB\xBF") ? head.mid(3) : head;
    text = text.trimmed();
    if (text.startsWith('<') && text.left(1024).contains("<svg")) {
        return Format::Svg;
    }
    return Format::Other;
}

ToviImageFileCheck::Format ToviImageFileCheck::Promised(const QString& name) {
    const QString ext = name.section(QLatin1Char('.'), -1).toUpper();
    if (!name.contains(QLatin1Char('.'))) {
        return Format::Other;
    }
    if (ext == QLatin1String("JPG") || ext == QLatin1String("JPEG")) {
        return Format::Jpeg;
    }
    if (ext == QLatin1String("TIF") || ext == QLatin1String("TIFF")) {
        return Format::Tiff;
    }
    if (ext == QLatin1String("SVG")) {
        return Format::Svg;
    }
    return Format::Other;
}

QString ToviImageFileCheck::FormatName(Format format) {
    switch (format) {
        case Format::None:
            return QStringLiteral("空のファイル");
        case Format::Jpeg:
            return QStringLiteral("JPEG");
        case Format::Tiff:
            return QStringLiteral("TIFF");
        case Format::Png:
            return QStringLiteral("PNG");
        case Format::Gif:
            return QStringLiteral("GIF");
        case Format::Bmp:
            return QStringLiteral("BMP");
        case Format::Svg:
            return QStringLiteral("SVG");
        case Format::Other:
            break;
    }
    return QStringLiteral("画像でないファイル");
}

const ToviImageFileCheck::PixelGuidance* ToviImageFileCheck::GuidanceFor(int family) {
    // 国交省: the digital-photograph standard asks for an effective pixel count at which the
    // blackboard can be read, "100万～300万画素程度"; guidance, hence a note. Sources:
    // 国土交通省 デジタル写真管理情報基準 (the 有効画素数 clause, unchanged through the
    // editions in use), as quoted in 富山県電子納品運用ガイドライン(案) Q&A G-2
    // (pref.toyama.jp, kendodukuri/doboku/faq.html) and in the 電子納品運用ガイドライン
    // 業務編 6.5.1 (デジタルカメラの設定). No standard found sets a hard limit on pixels or
    // on the bytes of a file (the guideline's "300～600KB 程度" describes a camera, it limits
    // nothing), so neither is checked.
    static const PixelGuidance kMlit{"国交省", 1'000'000, 3'000'000, "100万～300万画素程度"};
    // 農水省 and NEXCO: no source with their figure was found; KOWAN borrows the 国交省
    // tables but not, as far as any source says, this clause. Left out.
    return family == PhotoXMLMlit ? &kMlit : nullptr;
}

void ToviImageFileCheck::Begin(ToviCheckContext& context) {
    items.Find(context);
    files.Begin(context);
    guidance = GuidanceFor(context.Document().GetItemDef()->GetXMLType());
}

void ToviImageFileCheck::CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) {
    ForEachNamed(context, items, index, [&](bool photo, const QString& name, const QString& item) {
        CheckFile(context, index, photo, name, item, sink);
    });
}

void ToviImageFileCheck::CheckFile(ToviCheckContext& context, int index, bool photo,
                                   const QString& name, const QString& item,
                                   ToviFindingSink& sink) {
    const Format promised = Promised(name);
    if (promised == Format::Other) {
        return;  // no picture format to hold it to; the naming check speaks of the name
    }
    const QString path = files.PathOf(context, photo, name);
    if (path.isEmpty()) {
        return;
    }
    const QString relative = Relative(photo, name);
    const auto add = [&](const char* code, ToviCheckFinding::Severity severity,
                         const QString& message) {
        sink.Add(ToviCheckFinding::Of(code, severity, index, relative, item, message));
    };
    QFile file;
    if (!MibOpenRegularFile(file, path)) {
        add(kDecode, ToviCheckFinding::Error,
            QStringLiteral("%1「%2」を開けません").arg(item, name));
        return;
    }
    const Format found = Sniff(file.peek(1024));
    if (found != promised) {
        add(kFormat, ToviCheckFinding::Error,
            QStringLiteral("%1「%2」は拡張子では %3 ですが、中身は %4 です")
                .arg(item, name, FormatName(promised), FormatName(found)));
        return;
    }
    if (promised == Format::Svg) {
        return;  // a drawing in vector form: nothing here to hold it to
    }
    QSize size;
    if (promised == Format::Jpeg) {
        file.close();
        LumJpegFacts facts;
        if (!context.JpegHeader(path, &facts)) {
            add(kDecode, ToviCheckFinding::Error,
                QStringLiteral("%1「%2」は JPEG として読めません (途中で切れているか、"
                               "壊れています)")
                    .arg(item, name));
            return;
        }
        size = QSize(facts.width, facts.height);
        if (decode && !MibOpenRegularFile(file, path)) {
            add(kDecode, ToviCheckFinding::Error,
                QStringLiteral("%1「%2」を開けません").arg(item, name));
            return;
        }
    } else if (!QImageReader::supportedImageFormats().contains("tiff")) {
        return;  // this system reads no TIFF: the format was right, nothing more to say
    }
    if (decode || promised != Format::Jpeg) {
        QImageReader reader(&file, promised == Format::Jpeg ? "jpeg" : "tiff");
        reader.setAutoTransform(false);
        if (!size.isValid()) {
            size = reader.size();
        }
        if (!size.isValid()) {
            add(kDecode, ToviCheckFinding::Error,
                QStringLiteral("%1「%2」は %3 として読めません (%4)")
                    .arg(item, name, FormatName(promised), reader.errorString()));
            return;
        }
        if (decode) {
            reader.setScaledSize(EighthOf(size));
            if (reader.read().isNull()) {
                add(kDecode, ToviCheckFinding::Error,
                    QStringLiteral("%1「%2」の画像を復元できません (%3)")
                        .arg(item, name, reader.errorString()));
                return;
            }
        }
    }
    if (!photo || !guidance) {
        return;
    }
    const qint64 pixels = qint64(size.width()) * size.height();
    if (pixels < guidance->low || pixels > guidance->high) {
        add(kSize, ToviCheckFinding::Note,
            QStringLiteral("写真ファイル「%1」は %2 × %3 (約%4万画素) です。%5の目安は%6です")
                .arg(name)
                .arg(size.width())
                .arg(size.height())
                .arg((pixels + 5000) / 10000)
                .arg(QString::fromUtf8(guidance->generations),
                     QString::fromUtf8(guidance->wording)));
    }
}

// ---- dates ------------------------------------------------------------------------------------

QList<const char*> ToviShotDateCheck::Codes() const {
    return {kExifMismatch, kFileMismatch, kNoExif};
}

void ToviShotDateCheck::Begin(ToviCheckContext& context) {
    items.Find(context);
    files.Begin(context);
}

void ToviShotDateCheck::CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) {
    const ToviDateRow row = ToviDateTable::ReadRow(context, files, items, index);
    if (!row.readable) {
        return;
    }
    const QString item = QStringLiteral("撮影年月日");
    // An SVG photograph carries its Exif inside its main image: not read here.
    if (!row.exif.isValid() &&
        ToviImageFileCheck::Promised(row.file) == ToviImageFileCheck::Format::Jpeg) {
        sink.Add(
            ToviCheckFinding::Of(kNoExif, ToviCheckFinding::Note, index, row.file, item,
                                 QStringLiteral("写真ファイル「%1」に Exif の撮影日時がありません。"
                                                "撮影年月日「%2」と照合できません")
                                     .arg(row.file.mid(4), row.shotText)));
    }
    const auto far = [](std::optional<qint64> days) {
        return days && std::llabs(*days) > ToviDateTable::kToleranceDays;
    };
    if (far(row.ExifDays())) {
        sink.Add(ToviCheckFinding::Of(
            kExifMismatch, ToviCheckFinding::Warning, index, row.file, item,
            QStringLiteral("撮影年月日 %1 と Exif の撮影日時 %2 が %3 日ずれています")
                .arg(row.shotText, ToviDateTable::DateTimeText(row.exif))
                .arg(std::llabs(*row.ExifDays()))));
    }
    if (far(row.FileDays())) {
        sink.Add(ToviCheckFinding::Of(
            kFileMismatch, ToviCheckFinding::Warning, index, row.file, item,
            QStringLiteral("撮影年月日 %1 とファイルの更新日時 %2 が %3 日ずれて"
                           "います")
                .arg(row.shotText, ToviDateTable::DateTimeText(row.modified))
                .arg(std::llabs(*row.FileDays()))));
    }
}

// ---- tampering --------------------------------------------------------------------------------

ToviTamperCheck::ToviTamperCheck() = default;
ToviTamperCheck::~ToviTamperCheck() = default;

QList<const char*> ToviTamperCheck::Codes() const {
    return {kEdited, kUnknown, kUnavailable};
}

void ToviTamperCheck::Begin(ToviCheckContext& context) {
    items.Find(context);
    files.Begin(context);
    // Every verifier the program knows, in the order the user is offered them: each takes
    // only the photographs it can judge.
    chain = std::make_unique<ToviImageCheckCommon>();
    chain->SetCheckCameraType(
        {ToviImageCheckCommon::QueryCameraType(0), ToviImageCheckCommon::QueryCameraType(1)});
}

void ToviTamperCheck::CheckPhoto(ToviCheckContext& context, int index, ToviFindingSink& sink) {
    if (!chain || chain->GetProcessorCount() == 0) {
        return;
    }
    ForEachNamed(context, items, index, [&](bool photo, const QString& name, const QString& item) {
        if (!photo) {
            return;
        }
        const QString path = files.PathOf(context, true, name);
        if (path.isEmpty()) {
            return;
        }
        chain->SetFile(path);
        bool claimed = false;
        const ToviCheckProcessor::CheckStatus status = chain->CheckProcessedImage(&claimed);
        if (status == ToviCheckProcessor::StatusAltered) {
            sink.Add(ToviCheckFinding::Of(
                kEdited, ToviCheckFinding::Error, index, Relative(true, name), item,
                QStringLiteral("写真ファイル「%1」は撮影後に加工されています "
                               "(改ざん検知)")
                    .arg(name)));
        } else if (status == ToviCheckProcessor::StatusError && claimed) {
            sink.Add(ToviCheckFinding::Of(
                kUnknown, ToviCheckFinding::Note, index, Relative(true, name), item,
                QStringLiteral("写真ファイル「%1」の改ざん検知は判定できません"
                               "でした")
                    .arg(name)));
        }
    });
}

void ToviTamperCheck::Finish(ToviCheckContext&, ToviFindingSink& sink) {
    if (chain && chain->GetProcessorCount() == 0) {
        sink.Add(
            ToviCheckFinding::Of(kUnavailable, ToviCheckFinding::Note, -1, QString(), QString(),
                                 QStringLiteral("改ざん検知のライブラリが見つからないため、写真の"
                                                "改ざん検知は行っていません")));
    }
    chain.reset();
}

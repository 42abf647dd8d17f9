// Exif reading of LumImage: the one place besides the decoder that includes exiv2.

#include "platform/LumImage.h"
#include "platform/LumExiv2Setup.h"

#include "platform/Cp932.h"
#include "platform/MibFile.h"

#include <QFile>
#include <QStringDecoder>
#include <QStringList>
#include <QXmlStreamReader>

#include <exiv2/exiv2.hpp>

#include <locale.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <exception>
#include <mutex>
#include <optional>
#include <vector>

namespace {

// What tells one version of a file from the next: a file rewritten in place keeps its path,
// and one renamed into place keeps its path and perhaps its size.
struct FileStamp {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = -1;
    timespec modified{};

    bool operator==(const FileStamp& o) const {
        return device == o.device && inode == o.inode && size == o.size &&
               modified.tv_sec == o.modified.tv_sec && modified.tv_nsec == o.modified.tv_nsec;
    }
};

std::optional<FileStamp> StampOf(const QByteArray& path) {
    struct stat st {};
    if (path.isEmpty() || ::stat(path.constData(), &st) != 0 || !S_ISREG(st.st_mode)) {
        return std::nullopt;
    }
    return FileStamp{st.st_dev, st.st_ino, st.st_size, st.st_mtim};
}

// Everything the readers answer for one file, worked out in one pass over its metadata.
struct FileFacts {
    QByteArray path;
    FileStamp stamp;
    std::array<std::optional<QString>, LumCmntCount> texts;
    int width = 0;
    int height = 0;
};

// ---- reading values ------------------------------------------------------------------------

const Exiv2::Exifdatum* Find(const Exiv2::ExifData& exif, const char* key) {
    const auto it = exif.findKey(Exiv2::ExifKey(key));
    if (it == exif.end() || it->count() == 0 || it->size() == 0) {
        return nullptr;
    }
    return &*it;
}

QByteArray RawBytes(const Exiv2::Exifdatum& datum) {
    std::vector<Exiv2::byte> buffer(datum.size());
    datum.copy(buffer.data(), Exiv2::littleEndian);
    return QByteArray(reinterpret_cast<const char*>(buffer.data()),
                      static_cast<qsizetype>(buffer.size()));
}

// A number of a rational or integer field; false for a zero denominator or a value that is
// not a number at all.
bool NumberAt(const Exiv2::Exifdatum& datum, long n, double& out) {
    if (n >= datum.count()) {
        return false;
    }
    const Exiv2::Value& value = datum.value();
    switch (datum.typeId()) {
        case Exiv2::unsignedRational: {
            const auto& r = dynamic_cast<const Exiv2::URationalValue&>(value).value_.at(n);
            if (r.second == 0) {
                return false;
            }
            out = static_cast<double>(r.first) / static_cast<double>(r.second);
            break;
        }
        case Exiv2::signedRational: {
            const auto& r = dynamic_cast<const Exiv2::RationalValue&>(value).value_.at(n);
            if (r.second == 0) {
                return false;
            }
            out = static_cast<double>(r.first) / static_cast<double>(r.second);
            break;
        }
        case Exiv2::unsignedByte:
        case Exiv2::unsignedShort:
        case Exiv2::unsignedLong:
        case Exiv2::signedByte:
        case Exiv2::signedShort:
        case Exiv2::signedLong:
#if EXIV2_TEST_VERSION(0, 28, 0)
            out = static_cast<double>(value.toInt64(n));
#else
            out = static_cast<double>(value.toLong(n));
#endif
            break;
        default:
            return false;
    }
    return std::isfinite(out);
}

bool NumberOf(const Exiv2::ExifData& exif, const char* key, double& out) {
    const Exiv2::Exifdatum* datum = Find(exif, key);
    return datum && NumberAt(*datum, 0, out);
}

// Exif text is ASCII by the standard; cameras sold in Japan write names in Shift_JIS, and
// newer software UTF-8.
QString DecodeText(const QByteArray& bytes) {
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8.decode(bytes);
    if (utf8.hasError()) {
        text = Cp932::ToUnicode(bytes);
    }
    QString clean;
    clean.reserve(text.size());
    for (const QChar c : text) {
        if (c.unicode() >= 0x20 && c.unicode() != 0x7F) {
            clean += c;
        }
    }
    return clean.trimmed();
}

std::optional<QString> TextField(const Exiv2::ExifData& exif, const char* key) {
    const Exiv2::Exifdatum* datum = Find(exif, key);
    if (!datum) {
        return std::nullopt;
    }
    QByteArray bytes = RawBytes(*datum);
    const qsizetype end = bytes.indexOf('\0');
    if (end >= 0) {
        bytes.truncate(end);
    }
    const QString text = DecodeText(bytes);
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

// The copyright field holds the photographer's notice, a NUL, and the editor's notice.
std::optional<QString> Copyright(const Exiv2::ExifData& exif) {
    const Exiv2::Exifdatum* datum = Find(exif, "Exif.Image.Copyright");
    if (!datum) {
        return std::nullopt;
    }
    QStringList parts;
    for (const QByteArray& part : RawBytes(*datum).split('\0')) {
        const QString text = DecodeText(part);
        if (!text.isEmpty()) {
            parts.append(text);
        }
    }
    return parts.isEmpty() ? std::nullopt : std::optional(parts.join(QStringLiteral(" / ")));
}

// "YYYY:MM:DD HH:MM:SS" becomes "YYYY/MM/DD HH:MM:SS"; the blank or zero date that cameras
// write for an unset clock, and anything out of range, is no date.
std::optional<QString> DateField(const Exiv2::ExifData& exif, const char* key) {
    const Exiv2::Exifdatum* datum = Find(exif, key);
    if (!datum) {
        return std::nullopt;
    }
    const QByteArray bytes = RawBytes(*datum);
    if (bytes.size() < 19) {
        return std::nullopt;
    }
    int parts[6] = {};
    static constexpr int kStart[6] = {0, 5, 8, 11, 14, 17};
    static constexpr int kLength[6] = {4, 2, 2, 2, 2, 2};
    for (int i = 0; i < 6; ++i) {
        for (int j = 0; j < kLength[i]; ++j) {
            const char c = bytes[kStart[i] + j];
            if (c < '0' || c > '9') {
                return std::nullopt;
            }
            parts[i] = parts[i] * 10 + (c - '0');
        }
    }
    for (int at : {4, 7}) {
        if (bytes[at] != ':' && bytes[at] != '-' && bytes[at] != '/') {
            return std::nullopt;
        }
    }
    if (bytes[10] != ' ' || bytes[13] != ':' || bytes[16] != ':') {
        return std::nullopt;
    }
    if (parts[0] == 0 || parts[1] < 1 || parts[1] > 12 || parts[2] < 1 || parts[2] > 31 ||
        parts[3] > 24 || parts[4] > 59 || parts[5] > 60) {
        return std::nullopt;
    }
    return QString::asprintf("%04d/%02d/%02d %02d:%02d:%02d", parts[0], parts[1], parts[2],
                             parts[3], parts[4], parts[5]);
}

// "0230" reads as "2.30". A version that is not four digits is shown as its printable text.
std::optional<QString> VersionField(const Exiv2::ExifData& exif) {
    const Exiv2::Exifdatum* datum = Find(exif, "Exif.Photo.ExifVersion");
    if (!datum) {
        return std::nullopt;
    }
    const QByteArray bytes = RawBytes(*datum);
    const QByteArray four = bytes.left(4);
    const bool digits = four.size() == 4 && std::all_of(four.begin(), four.end(), [](char c) {
                            return c >= '0' && c <= '9';
                        });
    if (digits) {
        return QString::asprintf("%d.%s", four.left(2).toInt(), four.mid(2).constData());
    }
    QString text;
    for (const char c : bytes) {
        if (c == '\0') {
            break;
        }
        if (c < 0x20 || c > 0x7E) {
            return std::nullopt;
        }
        text += QLatin1Char(c);
    }
    text = text.trimmed();
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

// Exposure times under a second are shown as the fraction a camera dial shows.
std::optional<QString> FormatExposure(double seconds) {
    if (!(seconds > 0.0) || seconds > 1e6) {
        return std::nullopt;
    }
    if (seconds < 1.0) {
        const double denominator = 1.0 / seconds;
        const long long rounded = std::llround(denominator);
        if (seconds < 0.25 || std::fabs(denominator - static_cast<double>(rounded)) < 0.02) {
            return QStringLiteral("1/%1 秒").arg(rounded);
        }
    }
    const double tenths = std::round(seconds * 10.0) / 10.0;
    if (tenths == std::floor(tenths)) {
        return QStringLiteral("%1 秒").arg(static_cast<long long>(tenths));
    }
    return QString::asprintf("%.1f 秒", tenths);
}

// F numbers as lenses are marked: "F2.8", "F4", "F11".
std::optional<QString> FormatFNumber(double f) {
    if (!(f > 0.0) || f >= 1000.0) {
        return std::nullopt;
    }
    if (f >= 10.0) {
        return QString::asprintf("F%.0f", f);
    }
    QString text = QString::asprintf("F%.1f", f);
    if (text.endsWith(QLatin1String(".0"))) {
        text.chop(2);
    }
    return text;
}

// An APEX value (a power of two, as the shutter and aperture fields store them); values far
// outside what any camera writes are not shown.
std::optional<double> FromApex(const Exiv2::ExifData& exif, const char* key, double scale) {
    double apex = 0.0;
    if (!NumberOf(exif, key, apex) || std::fabs(apex) > 64.0) {
        return std::nullopt;
    }
    return std::exp2(apex * scale);
}

std::optional<QString> ShutterSpeed(const Exiv2::ExifData& exif) {
    const std::optional<double> seconds = FromApex(exif, "Exif.Photo.ShutterSpeedValue", -1.0);
    return seconds ? FormatExposure(*seconds) : std::nullopt;
}

std::optional<QString> ApexAperture(const Exiv2::ExifData& exif, const char* key) {
    const std::optional<double> f = FromApex(exif, key, 0.5);
    return f ? FormatFNumber(*f) : std::nullopt;
}

std::optional<QString> ExposureTime(const Exiv2::ExifData& exif) {
    double seconds = 0.0;
    return NumberOf(exif, "Exif.Photo.ExposureTime", seconds) ? FormatExposure(seconds)
                                                              : std::nullopt;
}

std::optional<QString> FNumber(const Exiv2::ExifData& exif) {
    double f = 0.0;
    return NumberOf(exif, "Exif.Photo.FNumber", f) ? FormatFNumber(f) : std::nullopt;
}

std::optional<QString> ExposureBias(const Exiv2::ExifData& exif) {
    double ev = 0.0;
    if (!NumberOf(exif, "Exif.Photo.ExposureBiasValue", ev) || std::fabs(ev) > 64.0) {
        return std::nullopt;
    }
    const double tenths = std::round(ev * 10.0) / 10.0;
    if (tenths == 0.0) {
        return QStringLiteral("0.0 EV");
    }
    return QString::asprintf("%+.1f EV", tenths);
}

std::optional<QString> FocalLength(const Exiv2::ExifData& exif) {
    double mm = 0.0;
    if (!NumberOf(exif, "Exif.Photo.FocalLength", mm) || !(mm > 0.0) || mm >= 100000.0) {
        return std::nullopt;
    }
    return QString::asprintf("%.1f mm", mm);
}

// Flash and metering mode in the Exif library's own English wording.
std::optional<QString> Printed(const Exiv2::ExifData& exif, const char* key) {
    const Exiv2::Exifdatum* datum = Find(exif, key);
    if (!datum) {
        return std::nullopt;
    }
    const QString text = QString::fromStdString(datum->print(&exif)).trimmed();
    return text.isEmpty() ? std::nullopt : std::optional(text);
}

// Degrees, minutes and seconds from the (up to) three rationals of a GPS coordinate, with the
// hemisphere letter of its reference field: "N 35°39'29.16\"".
std::optional<QString> Coordinate(const Exiv2::ExifData& exif, const char* key, const char* refKey,
                                  double limit, char positive, char negative) {
    const Exiv2::Exifdatum* datum = Find(exif, key);
    if (!datum) {
        return std::nullopt;
    }
    double degrees = 0.0;
    double scale = 1.0;
    for (long i = 0; i < std::min<long>(datum->count(), 3); ++i) {
        double part = 0.0;
        if (!NumberAt(*datum, i, part)) {
            return std::nullopt;
        }
        degrees += part / scale;
        scale *= 60.0;
    }
    char hemisphere = degrees < 0 ? negative : 0;
    degrees = std::fabs(degrees);
    if (degrees > limit) {
        return std::nullopt;
    }
    if (const std::optional<QString> ref = TextField(exif, refKey)) {
        const QString upper = ref->toUpper();
        if (upper == QLatin1Char(positive) || upper == QLatin1Char(negative)) {
            hemisphere = upper.at(0).toLatin1();
        }
    }
    const long long hundredths = std::llround(degrees * 360000.0);
    const QString text =
        QString::asprintf("%lld°%02lld'%02lld.%02lld\"", hundredths / 360000,
                          (hundredths / 6000) % 60, (hundredths / 100) % 60, hundredths % 100);
    return hemisphere ? QString(QLatin1Char(hemisphere)) + QLatin1Char(' ') + text : text;
}

std::optional<QString> Altitude(const Exiv2::ExifData& exif) {
    double metres = 0.0;
    if (!NumberOf(exif, "Exif.GPSInfo.GPSAltitude", metres) || std::fabs(metres) >= 1e6) {
        return std::nullopt;
    }
    double ref = 0.0;
    if (NumberOf(exif, "Exif.GPSInfo.GPSAltitudeRef", ref) && ref == 1.0) {
        metres = -std::fabs(metres);  // below sea level
    }
    const double tenths = std::round(metres * 10.0) / 10.0;
    return QString::asprintf("%.1f m", tenths == 0.0 ? 0.0 : tenths);
}

// The picture's size as the Exif block states it; the frame's when the block leaves it out
// or states a size no picture has.
bool ExifSize(const Exiv2::ExifData& exif, int frameWidth, int frameHeight, int& width,
              int& height) {
    constexpr double kLimit = 1000000.0;
    const auto usable = [&](const char* xKey, const char* yKey) {
        double w = 0.0;
        double h = 0.0;
        if (!NumberOf(exif, xKey, w) || !NumberOf(exif, yKey, h) || w < 1.0 || h < 1.0 ||
            w > kLimit || h > kLimit) {
            return false;
        }
        width = static_cast<int>(w);
        height = static_cast<int>(h);
        return true;
    };
    if (usable("Exif.Photo.PixelXDimension", "Exif.Photo.PixelYDimension") ||
        usable("Exif.Image.ImageWidth", "Exif.Image.ImageLength")) {
        return true;
    }
    if (frameWidth > 0 && frameHeight > 0) {
        width = frameWidth;
        height = frameHeight;
        return true;
    }
    return false;
}

void CollectTexts(const Exiv2::ExifData& exif, FileFacts& facts) {
    auto& t = facts.texts;
    t[LumCmntArtist] = TextField(exif, "Exif.Image.Artist");
    t[LumCmntCopyright] = Copyright(exif);
    t[LumCmntDateTime] = DateField(exif, "Exif.Image.DateTime");
    t[LumCmntMake] = TextField(exif, "Exif.Image.Make");
    t[LumCmntModel] = TextField(exif, "Exif.Image.Model");
    t[LumCmntSoftware] = TextField(exif, "Exif.Image.Software");
    t[LumCmntExifVersion] = VersionField(exif);
    t[LumCmntDateTimeOriginal] = DateField(exif, "Exif.Photo.DateTimeOriginal");
    t[LumCmntDateTimeDigitized] = DateField(exif, "Exif.Photo.DateTimeDigitized");
    t[LumCmntShutterSpeedValue] = ShutterSpeed(exif);
    t[LumCmntApertureValue] = ApexAperture(exif, "Exif.Photo.ApertureValue");
    t[LumCmntExposureBiasValue] = ExposureBias(exif);
    t[LumCmntMaxApertureValue] = ApexAperture(exif, "Exif.Photo.MaxApertureValue");
    t[LumCmntMeteringMode] = Printed(exif, "Exif.Photo.MeteringMode");
    t[LumCmntFlash] = Printed(exif, "Exif.Photo.Flash");
    t[LumCmntFocalLength] = FocalLength(exif);
    t[LumCmntExposureTime] = ExposureTime(exif);
    t[LumCmntFNumber] = FNumber(exif);
    t[LumCmntGPSLatitude] =
        Coordinate(exif, "Exif.GPSInfo.GPSLatitude", "Exif.GPSInfo.GPSLatitudeRef", 90.0, 'N', 'S');
    t[LumCmntGPSLongitude] = Coordinate(exif, "Exif.GPSInfo.GPSLongitude",
                                        "Exif.GPSInfo.GPSLongitudeRef", 180.0, 'E', 'W');
    t[LumCmntGPSAltitude] = Altitude(exif);
    int width = 0;
    int height = 0;
    if (ExifSize(exif, facts.width, facts.height, width, height)) {
        t[LumCmntImageSize] = QStringLiteral("%1 x %2").arg(width).arg(height);
        t[LumCmntPixelCount] = QString::number(static_cast<qint64>(width) * height);
    }
}

// The Exif library words flash and metering through gettext; under the C locale they stay in
// English whatever the user's language, as reports expect. Holds it on this thread.
class CLocaleScope {
public:
    CLocaleScope() {
        static const locale_t c = newlocale(LC_ALL_MASK, "C", locale_t(nullptr));
        if (c) {
            previous = uselocale(c);
        }
    }
    ~CLocaleScope() {
        if (previous) {
            uselocale(previous);
        }
    }
    CLocaleScope(const CLocaleScope&) = delete;
    CLocaleScope& operator=(const CLocaleScope&) = delete;

private:
    locale_t previous = locale_t(nullptr);
};

// Reads the file's metadata; the facts stay empty when it is not an image the Exif library
// knows, or is cut short inside its header.
void ReadFacts(FileFacts& facts) {
    LumPrepareExiv2();
    try {
        auto image = Exiv2::ImageFactory::open(facts.path.toStdString());
        if (!image.get()) {
            return;
        }
        image->readMetadata();
        const int width = image->pixelWidth();
        const int height = image->pixelHeight();
        if (width > 0 && height > 0) {
            facts.width = width;
            facts.height = height;
        }
        const Exiv2::ExifData& exif = image->exifData();
        if (!exif.empty()) {
            const CLocaleScope english;
            CollectTexts(exif, facts);
        }
    } catch (const std::exception&) {
        const QByteArray path = facts.path;
        const FileStamp stamp = facts.stamp;
        facts = FileFacts{};
        facts.path = path;
        facts.stamp = stamp;
    }
}

// The last file read; one for every kind of question, so that a file is read once.
std::mutex cacheMutex;
FileFacts cache;

// Answers from the facts of the file at path, reading them unless the last file read was
// this one, unchanged.
template <typename Answer>
bool WithFacts(const QString& path, Answer answer) {
    const QByteArray encoded = QFile::encodeName(path);
    const std::optional<FileStamp> stamp = StampOf(encoded);
    if (!stamp) {
        return false;
    }
    std::lock_guard<std::mutex> lock(cacheMutex);
    if (cache.path != encoded || !(cache.stamp == *stamp)) {
        cache = FileFacts{};
        cache.path = encoded;
        cache.stamp = *stamp;
        ReadFacts(cache);
    }
    return answer(cache);
}

// ---- SVG photographs -----------------------------------------------------------------------

// The bytes of a base64 "data:image/jpeg" URI; empty for any other kind of reference.
QByteArray JpegFromDataUri(QStringView uri) {
    uri = uri.trimmed();
    if (!uri.startsWith(QLatin1String("data:"), Qt::CaseInsensitive)) {
        return {};
    }
    const qsizetype comma = uri.indexOf(QLatin1Char(','));
    if (comma < 0) {
        return {};
    }
    const QString header = uri.mid(5, comma - 5).toString().toLower().remove(QLatin1Char(' '));
    const QStringList params = header.split(QLatin1Char(';'));
    const QString type = params.value(0);
    if ((type != QLatin1String("image/jpeg") && type != QLatin1String("image/jpg")) ||
        !params.contains(QLatin1String("base64"))) {
        return {};
    }
    QByteArray base64;
    base64.reserve(uri.size() - comma);
    for (const QChar c : uri.mid(comma + 1)) {
        if (!c.isSpace()) {
            if (c.unicode() > 0x7F) {
                return {};
            }
            base64 += static_cast<char>(c.unicode());
        }
    }
    auto decoded = QByteArray::fromBase64Encoding(base64, QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded) {
        return {};
    }
    const QByteArray& bytes = *decoded;
    if (bytes.size() < 4 || static_cast<uchar>(bytes[0]) != 0xFF ||
        static_cast<uchar>(bytes[1]) != 0xD8 || static_cast<uchar>(bytes[2]) != 0xFF) {
        return {};
    }
    return bytes;
}

}  // namespace

bool LumImage::GetComment(const QString& path, int code, QString& text) {
    if (code < 0 || code >= LumCmntCount) {
        return false;
    }
    return WithFacts(path, [&](const FileFacts& facts) {
        const std::optional<QString>& found = facts.texts[static_cast<size_t>(code)];
        if (!found) {
            return false;
        }
        text = *found;
        return true;
    });
}

bool LumImage::GetCommentImageSize(const QString& path, int& width, int& height) {
    return WithFacts(path, [&](const FileFacts& facts) {
        if (facts.width <= 0 || facts.height <= 0) {
            return false;
        }
        width = facts.width;
        height = facts.height;
        return true;
    });
}

bool LumImage::GetMainImageFromSvg(const QString& svgPath, const QString& outPath) {
    QFile file;
    if (outPath.isEmpty() || !MibOpenRegularFile(file, svgPath)) {
        return false;
    }
    QXmlStreamReader xml(&file);
    static const QString kXlink = QStringLiteral("http://www.w3.org/1999/xlink");
    while (!xml.atEnd() && !xml.hasError()) {
        if (xml.readNext() != QXmlStreamReader::StartElement ||
            xml.name() != QLatin1String("image")) {
            continue;
        }
        const QXmlStreamAttributes attributes = xml.attributes();
        QStringView href = attributes.value(kXlink, QStringLiteral("href"));
        if (href.isEmpty()) {
            href = attributes.value(QStringLiteral("href"));
        }
        const QByteArray jpeg = JpegFromDataUri(href);
        if (!jpeg.isEmpty()) {
            return MibWriteFileAtomic(outPath, jpeg);
        }
    }
    return false;
}

void LumPrepareExiv2() {
    static std::once_flag once;
    std::call_once(once, [] {
        Exiv2::LogMsg::setHandler(nullptr);
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        Exiv2::XmpParser::initialize();
    });
}

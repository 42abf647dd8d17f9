#include "checks/ToviDateTable.h"
#include "checks/ToviDeliveryChecker.h"
#include "checks/ToviItemChecks.h"
#include "checks/ToviStructureCheck.h"
#include "checks/ToviImageChecks.h"
#include "checks/ToviValueChecks.h"
#include "document/ToviData.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/Cp932.h"
#include "platform/DoxDocument.h"
#include "platform/MibFile.h"
#include "platform/ToviProfile.h"
#include "platform/ToviVerifierLibrary.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/FifoTrap.h"

#include <QDir>
#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

QByteArray ReadAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool WriteAll(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size();
}

// Sets the text of element tag of the photograph at index in the Shift_JIS PHOTO.XML; index
// -1 is the part before the first photograph (基礎情報).
bool SetValue(const QString& photoFolder, int index, const QString& tag, const QString& text) {
    const QString path = photoFolder + u"/PHOTO.XML"_s;
    QByteArray xml = ReadAll(path);
    const QByteArray block = Cp932::FromUnicode(u"<写真情報>"_s);
    qsizetype at = index < 0 ? 0 : -1;
    for (int i = 0; i <= index; ++i) {
        at = xml.indexOf(block, at + 1);
        if (at < 0) {
            return false;
        }
    }
    const QByteArray open = Cp932::FromUnicode(u"<"_s + tag + u">"_s);
    const QByteArray close = Cp932::FromUnicode(u"</"_s + tag + u">"_s);
    const qsizetype from = xml.indexOf(open, at);
    const qsizetype to = xml.indexOf(close, from);
    const qsizetype end =
        index < 0 ? xml.indexOf(block) : xml.indexOf(Cp932::FromUnicode(u"</写真情報>"_s), at);
    if (from < 0 || to < 0 || to > end) {
        return false;
    }
    bool ok = false;
    const QByteArray value = Cp932::FromUnicode(text, &ok);
    xml.replace(from + open.size(), to - from - open.size(), value);
    return ok && WriteAll(path, xml);
}

// Replaces, in the 写真情報 of the photograph at index, what pattern matches with
// replacement (QRegularExpression syntax); false when it matches nothing.
bool EditPhoto(const QString& photoFolder, int index, const QString& pattern,
               const QString& replacement) {
    const QString path = photoFolder + u"/PHOTO.XML"_s;
    QString xml = Cp932::ToUnicode(ReadAll(path));
    qsizetype at = -1;
    for (int i = 0; i <= index; ++i) {
        at = xml.indexOf(u"<写真情報>"_s, at + 1);
        if (at < 0) {
            return false;
        }
    }
    const qsizetype end = xml.indexOf(u"</写真情報>"_s, at);
    QString block = xml.mid(at, end - at);
    const QRegularExpression expression(pattern, QRegularExpression::DotMatchesEverythingOption);
    if (!block.contains(expression)) {
        return false;
    }
    block.replace(expression, replacement);
    bool ok = false;
    const QByteArray bytes = Cp932::FromUnicode(xml.replace(at, end - at, block), &ok);
    return ok && WriteAll(path, bytes);
}

// Gives the elements titled in the item definitions the data count "0", the strict form
// whose absence loses the photograph or block, in a copy under folder that the loader then
// reads.
bool MakeStrict(const QString& folder, const QStringList& titles) {
    QByteArray xml = ReadAll(MibProgramFolder(MibProgramFiles::Data) + u"/READITEM.XML"_s);
    for (const QString& title : titles) {
        const QByteArray from = "<タイトル>" + title.toUtf8() + "</タイトル>";
        for (qsizetype at = xml.indexOf(from); at >= 0; at = xml.indexOf(from, at + 1)) {
            const qsizetype count = xml.indexOf("<データ数>", at) + qsizetype(strlen("<データ数>"));
            const qsizetype close = xml.indexOf("</データ数>", count);
            xml.replace(count, close - count, "0");
        }
    }
    return QDir().mkpath(folder) && WriteAll(folder + u"/READITEM.XML"_s, xml);
}

// 撮影箇所 written after 撮影年月日 in its 撮影情報 (the reader takes the date, loses the place).
bool PlaceAfterDate(const QString& photoFolder, int index) {
    EditPhoto(photoFolder, index, u"<撮影箇所>.*?</撮影箇所>"_s, QString());  // when written
    return EditPhoto(photoFolder, index, u"(<撮影年月日>.*?</撮影年月日>)"_s,
                     u"\\1<撮影箇所>橋台</撮影箇所>"_s);
}

bool DateTwice(const QString& photoFolder, int index) {
    return EditPhoto(photoFolder, index, u"(<撮影年月日>.*?</撮影年月日>)"_s, u"\\1\\1"_s);
}

// An element of no generation at the end of 写真ファイル情報.
bool AddUnknown(const QString& photoFolder, int index) {
    return EditPhoto(photoFolder, index, u"(</メディア番号>)"_s, u"\\1<撮影者>山田</撮影者>"_s);
}

// Rewrites the photograph's JPEG with these Exif facts and a picture of this size, its file
// time left at when.
bool RewriteJpeg(const QString& path, const ExifFacts& facts, QSize size, const QDateTime& when) {
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(Qt::darkGreen);
    if (!WriteExifJpeg(path, picture, facts)) {
        return false;
    }
    QFile file(path);
    return file.open(QIODevice::ReadWrite) &&
           file.setFileTime(when, QFileDevice::FileModificationTime);
}

bool SetFileTime(const QString& path, const QDateTime& when) {
    QFile file(path);
    return file.open(QIODevice::ReadWrite) &&
           file.setFileTime(when, QFileDevice::FileModificationTime);
}

struct Expected {
    QString code;
    int index;
    QString where;  // the item, or the file when the finding names one
};

QString Where(const ToviCheckFinding& f) {
    return f.file.isEmpty() ? f.item : f.file;
}

}  // namespace

// The delivery checks on written deliveries: each fault planted alone is found by its code on
// its photograph and nothing else is an error; a clean delivery of any generation has no error.
class ToviChecksTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    int deliveries = 0;
    std::unique_ptr<FifoTrap> fifo;

    // A delivery of six photographs, each with one reference drawing, tiny images.
    QString Write(WrittenDelivery& written, Generation generation = Generation::Mlit20) {
        DeliveryOptions options;
        options.generation = generation;
        options.photoCount = 6;
        options.images = DeliveryOptions::Images::Tiny;
        options.tinySize = QSize(1280, 960);  // within the pixel guidance
        options.drawingShare = 1.0;
        options.maxRepeats = 1;
        QString error;
        const QString root = temp.filePath(u"d%1"_s.arg(++deliveries));
        return WriteDelivery(root, options, &written, &error) ? written.photoFolder : QString();
    }

    static void Check(const QString& folder, int family, ToviFindingCollector& findings,
                      bool withImages = true) {
        std::unique_ptr<ToviData> document =
            ToviEnouDataFactory().Create(nullptr, folder, static_cast<PhotoXMLType>(family));
        QVERIFY(document);
        QCOMPARE(document->GetErrorType(), ReadErrNone);
        QVERIFY(ToviDeliveryChecker::Standard(withImages)->Run(*document, findings));
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(u"profile.ini"_s));
        // Small slices: the load and the structure check's second read cross from slice to
        // slice between every two photographs.
        DoxDocument::SetSliceSizeForTesting(64);
        // No tamper verifier unless a test brings the stand-ins.
        QVERIFY(QDir().mkpath(temp.filePath(u"no-verifiers"_s)));
        ToviVerifierLibrary::SetProgramPathOverride(temp.filePath(u"no-verifiers"_s));
    }
    void cleanupTestCase() { ToviVerifierLibrary::SetProgramPathOverride(QString()); }
    void cleanup() {
        fifo.reset();
        ToviItemDef::SetProgramPathOverride(QString());
        ToviVerifierLibrary::SetProgramPathOverride(temp.filePath(u"no-verifiers"_s));
    }

    void plantedFault_data() {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QString>("code");
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("where");
        QTest::addColumn<Generation>("generation");
        QTest::addColumn<int>("severity");  // -1: any
        const auto row = [](const char* fault, const char* code, int index, const QString& where,
                            Generation generation = Generation::Mlit20, int severity = -1) {
            QTest::newRow(fault) << QString::fromUtf8(fault) << QString::fromLatin1(code) << index
                                 << where << generation << severity;
        };
        row("date with slashes", "date.format", 2, u"撮影年月日"_s);
        row("date with full-width digits", "date.format", 1, u"撮影年月日"_s);
        row("date 30 February", "date.invalid", 3, u"撮影年月日"_s);
        row("date before the work", "date.outside-period", 4, u"撮影年月日"_s);
        row("代表写真 2", "flag.not-binary", 0, u"代表写真"_s);
        row("提出頻度写真 yes", "flag.not-binary", 5, u"提出頻度写真"_s);
        row("serial with a letter", "serial.not-digits", 2, u"シリアル番号"_s);
        row("serial repeated", "serial.duplicate", 3, u"シリアル番号"_s);
        row("serial repeated with zeros", "serial.duplicate", 4, u"シリアル番号"_s);
        row("serial falling", "serial.order", 2, u"シリアル番号"_s);
        row("circled digit", "text.non-jis", 1, u"写真タイトル"_s);
        row("company sign in the place", "text.non-jis", 2, u"撮影箇所"_s);
        row("user-defined character", "text.non-jis", 3, u"写真タイトル"_s);
        row("half-width katakana", "text.non-jis", 0, u"写真タイトル"_s);
        row("emoji", "text.non-jis", 5, u"写真タイトル"_s);
        row("roman numeral in 基礎情報", "text.non-jis", -1, u"適用要領基準"_s);
        row("photograph missing", "file.missing", 2, u"PIC/P0000003.JPG"_s);
        row("drawing missing", "file.missing", 0, u"DRA/D0000001.JPG"_s);
        row("photograph in lower case", "file.case-mismatch", 1, u"PIC/P0000002.JPG"_s);
        row("photograph named freely", "file.name-pattern", 4, u"PIC/IMG_0005.JPG"_s);
        row("drawing named in lower case", "file.name-pattern", 3, u"DRA/d0000004.JPG"_s);
        row("Thumbs.db", "file.stray", -1, u"PIC/Thumbs.db"_s);
        row("folder in DRA", "file.stray", -1, u"DRA/old"_s);
        row("one file for two photographs", "file.shared", 3, u"PIC/P0000002.JPG"_s);
        row("photograph a FIFO", "file.special", 1, u"PIC/P0000002.JPG"_s);
        row("photograph a link outside", "file.special", 2, u"PIC/P0000003.JPG"_s);
        row("photograph a dangling link", "file.missing", 4, u"PIC/P0000005.JPG"_s);
        row("strict シリアル番号 missing", "load.photo-dropped", -1, u"シリアル番号"_s);
        // With the definitions as shipped: a photograph without its file is not read.
        row("写真ファイル名 missing", "load.photo-dropped", -1, u"写真ファイル名"_s);
        row("strict 参考図ファイル名 missing", "load.block-dropped", 1, u"参考図ファイル名"_s);
        const int error = ToviCheckFinding::Error;
        const int warning = ToviCheckFinding::Warning;
        row("撮影箇所 after 撮影年月日", "structure.order", 3, u"撮影箇所"_s, Generation::Mlit20,
            error);
        row("撮影年月日 twice", "structure.multiplicity", 1, u"撮影年月日"_s, Generation::Mlit20,
            error);
        row("メディア番号 missing", "structure.multiplicity", 2, u"メディア番号"_s,
            Generation::Mlit20, error);
        row("unknown element", "structure.unknown", 4, u"撮影者"_s, Generation::Mlit20, error);
        row("写真フォルダ名 after 参考図フォルダ名", "structure.order", -1, u"写真フォルダ名"_s,
            Generation::Mlit20, error);
        row("unknown element in 基礎情報", "structure.unknown", -1, u"発注者"_s, Generation::Mlit20,
            error);
        row("18: 撮影箇所 after 撮影年月日", "structure.order", 3, u"撮影箇所"_s,
            Generation::Mlit18, warning);
        row("18: 撮影年月日 twice", "structure.multiplicity", 1, u"撮影年月日"_s,
            Generation::Mlit18, warning);
        row("18: メディア番号 missing", "structure.multiplicity", 2, u"メディア番号"_s,
            Generation::Mlit18, warning);
        row("18: unknown element", "structure.unknown", 4, u"撮影者"_s, Generation::Mlit18,
            warning);
        row("text file named .JPG", "image.format", 1, u"PIC/P0000002.JPG"_s);
        row("PNG named .JPG", "image.format", 3, u"PIC/P0000004.JPG"_s);
        row("drawing a GIF", "image.format", 2, u"DRA/D0000003.JPG"_s);
        row("JPEG cut short", "image.decode", 2, u"PIC/P0000003.JPG"_s);
        row("JPEG scans damaged", "image.decode", 4, u"PIC/P0000005.JPG"_s);
        row("photograph of 30万画素", "image.size", 1, u"PIC/P0000002.JPG"_s);
        row("photograph of 1200万画素", "image.size", 0, u"PIC/P0000001.JPG"_s);
        row("Exif date two days later", "date.exif-mismatch", 3, u"PIC/P0000004.JPG"_s);
        row("Exif date two days earlier", "date.exif-mismatch", 0, u"PIC/P0000001.JPG"_s);
        row("file time two days off", "date.file-mismatch", 5, u"PIC/P0000006.JPG"_s);
        row("no Exif", "date.no-exif", 2, u"PIC/P0000003.JPG"_s);
        row("photograph tampered", "tamper.edited", 1, u"PIC/P0000002.JPG"_s);
        row("verifier cannot judge", "tamper.unknown", 4, u"PIC/P0000005.JPG"_s);
        row("no verifier", "tamper.unavailable", -1, QString());
    }
    void plantedFault() {
        QFETCH(QString, fault);
        QFETCH(QString, code);
        QFETCH(int, index);
        QFETCH(QString, where);
        QFETCH(Generation, generation);
        QFETCH(int, severity);
        WrittenDelivery written;
        const QString folder = Write(written, generation);
        QVERIFY(!folder.isEmpty());
        const QString pic = folder + u"/PIC/"_s;
        const QString dra = folder + u"/DRA/"_s;
        const QHash<QString, std::function<bool()>> plants{
            {u"date with slashes"_s,
             [&] { return SetValue(folder, 2, u"撮影年月日"_s, u"2024/04/01"_s); }},
            {u"date with full-width digits"_s,
             [&] { return SetValue(folder, 1, u"撮影年月日"_s, u"２０２４-０４-０１"_s); }},
            {u"date 30 February"_s,
             [&] { return SetValue(folder, 3, u"撮影年月日"_s, u"2023-02-30"_s); }},
            {u"date before the work"_s,
             [&] { return SetValue(folder, 4, u"撮影年月日"_s, u"1999-12-31"_s); }},
            {u"代表写真 2"_s, [&] { return SetValue(folder, 0, u"代表写真"_s, u"2"_s); }},
            {u"提出頻度写真 yes"_s,
             [&] { return SetValue(folder, 5, u"提出頻度写真"_s, u"有"_s); }},
            {u"serial with a letter"_s,
             [&] { return SetValue(folder, 2, u"シリアル番号"_s, u"3a"_s); }},
            {u"serial repeated"_s, [&] { return SetValue(folder, 3, u"シリアル番号"_s, u"3"_s); }},
            {u"serial repeated with zeros"_s,
             [&] { return SetValue(folder, 4, u"シリアル番号"_s, u"004"_s); }},
            {u"serial falling"_s, [&] { return SetValue(folder, 1, u"シリアル番号"_s, u"10"_s); }},
            {u"circled digit"_s,
             [&] { return SetValue(folder, 1, u"写真タイトル"_s, u"①番 全景"_s); }},
            {u"company sign in the place"_s,
             [&] { return SetValue(folder, 2, u"撮影箇所"_s, u"㈱緑ヶ丘 前"_s); }},
            {u"user-defined character"_s,
             [&] {
                 return SetValue(folder, 3, u"写真タイトル"_s, QString(QChar(0xE000)) + u"全景"_s);
             }},
            {u"half-width katakana"_s,
             [&] { return SetValue(folder, 0, u"写真タイトル"_s, u"ｾﾞﾝｹｲ"_s); }},
            // No Shift_JIS form: written as a character reference.
            {u"emoji"_s,
             [&] { return SetValue(folder, 5, u"写真タイトル"_s, u"全景&#x1F600;"_s); }},
            {u"roman numeral in 基礎情報"_s,
             [&] { return SetValue(folder, -1, u"適用要領基準"_s, u"土木Ⅲ"_s); }},
            {u"photograph missing"_s, [&] { return QFile::remove(pic + u"P0000003.JPG"_s); }},
            {u"drawing missing"_s, [&] { return QFile::remove(dra + u"D0000001.JPG"_s); }},
            {u"photograph in lower case"_s,
             [&] { return QFile::rename(pic + u"P0000002.JPG"_s, pic + u"p0000002.jpg"_s); }},
            {u"photograph named freely"_s,
             [&] {
                 return SetValue(folder, 4, u"写真ファイル名"_s, u"IMG_0005.JPG"_s) &&
                        QFile::rename(pic + u"P0000005.JPG"_s, pic + u"IMG_0005.JPG"_s);
             }},
            {u"drawing named in lower case"_s,
             [&] {
                 return SetValue(folder, 3, u"参考図ファイル名"_s, u"d0000004.JPG"_s) &&
                        QFile::rename(dra + u"D0000004.JPG"_s, dra + u"d0000004.JPG"_s);
             }},
            {u"Thumbs.db"_s, [&] { return WriteAll(pic + u"Thumbs.db"_s, "cache"); }},
            {u"folder in DRA"_s, [&] { return QDir().mkdir(dra + u"old"_s); }},
            {u"one file for two photographs"_s,
             [&] {
                 return SetValue(folder, 3, u"写真ファイル名"_s, u"P0000002.JPG"_s) &&
                        QFile::remove(pic + u"P0000004.JPG"_s);
             }},
            {u"photograph a FIFO"_s,
             [&] {
                 if (!QFile::remove(pic + u"P0000002.JPG"_s)) {
                     return false;
                 }
                 fifo = std::make_unique<FifoTrap>(pic + u"P0000002.JPG"_s);
                 return fifo->IsValid();
             }},
            {u"photograph a link outside"_s,
             [&] {
                 const QString outside = temp.filePath(u"outside-%1.JPG"_s.arg(deliveries));
                 return QFile::rename(pic + u"P0000003.JPG"_s, outside) &&
                        QFile::link(outside, pic + u"P0000003.JPG"_s);
             }},
            {u"photograph a dangling link"_s,
             [&] {
                 return QFile::remove(pic + u"P0000005.JPG"_s) &&
                        QFile::link(pic + u"gone.JPG"_s, pic + u"P0000005.JPG"_s);
             }},
            {u"写真ファイル名 missing"_s,
             [&] {
                 return EditPhoto(folder, 3, u"<写真ファイル名>.*?</写真ファイル名>"_s,
                                  QString()) &&
                        QFile::remove(pic + u"P0000004.JPG"_s) &&
                        QFile::remove(dra + u"D0000004.JPG"_s);
             }},
            {u"strict シリアル番号 missing"_s,
             [&] {
                 // The third photograph is not read: its files would be stray.
                 return MakeStrict(temp.filePath(u"strict"_s), {u"シリアル番号"_s}) &&
                        EditPhoto(folder, 2, u"<シリアル番号>.*?</シリアル番号>"_s, QString()) &&
                        QFile::remove(pic + u"P0000003.JPG"_s) &&
                        QFile::remove(dra + u"D0000003.JPG"_s);
             }},
            {u"strict 参考図ファイル名 missing"_s,
             [&] {
                 return MakeStrict(temp.filePath(u"strict"_s), {u"参考図ファイル名"_s}) &&
                        EditPhoto(folder, 1, u"<参考図ファイル名>.*?</参考図ファイル名>"_s,
                                  QString()) &&
                        QFile::remove(dra + u"D0000002.JPG"_s);
             }},
            {u"撮影箇所 after 撮影年月日"_s, [&] { return PlaceAfterDate(folder, 3); }},
            {u"18: 撮影箇所 after 撮影年月日"_s, [&] { return PlaceAfterDate(folder, 3); }},
            {u"撮影年月日 twice"_s, [&] { return DateTwice(folder, 1); }},
            {u"18: 撮影年月日 twice"_s, [&] { return DateTwice(folder, 1); }},
            {u"メディア番号 missing"_s,
             [&] {
                 return EditPhoto(folder, 2, u"<メディア番号>.*?</メディア番号>"_s, QString());
             }},
            {u"18: メディア番号 missing"_s,
             [&] {
                 return EditPhoto(folder, 2, u"<メディア番号>.*?</メディア番号>"_s, QString());
             }},
            {u"unknown element"_s, [&] { return AddUnknown(folder, 4); }},
            {u"18: unknown element"_s, [&] { return AddUnknown(folder, 4); }},
            {u"写真フォルダ名 after 参考図フォルダ名"_s,
             [&] {
                 const QString path = folder + u"/PHOTO.XML"_s;
                 QString xml = Cp932::ToUnicode(ReadAll(path));
                 xml.remove(QRegularExpression(u"<参考図フォルダ名>.*?</参考図フォルダ名>"_s));
                 xml.replace(u"<写真フォルダ名>"_s,
                             u"<参考図フォルダ名>DRA</参考図フォルダ名><写真フォルダ名>"_s);
                 return WriteAll(path, Cp932::FromUnicode(xml));
             }},
            {u"unknown element in 基礎情報"_s,
             [&] {
                 const QString path = folder + u"/PHOTO.XML"_s;
                 QString xml = Cp932::ToUnicode(ReadAll(path));
                 xml.replace(u"<写真フォルダ名>"_s, u"<発注者>国</発注者><写真フォルダ名>"_s);
                 return WriteAll(path, Cp932::FromUnicode(xml));
             }},
            {u"text file named .JPG"_s,
             [&] { return WriteAll(pic + u"P0000002.JPG"_s, "写真ではありません\n"_ba); }},
            {u"PNG named .JPG"_s,
             [&] {
                 QImage picture(1280, 960, QImage::Format_RGB32);
                 picture.fill(Qt::gray);
                 return picture.save(pic + u"P0000004.JPG"_s, "PNG");
             }},
            {u"drawing a GIF"_s,
             [&] { return WriteAll(dra + u"D0000003.JPG"_s, "GIF89a\x01\x00\x01\x00"_ba); }},
            {u"JPEG cut short"_s,
             [&] {
                 QFile file(pic + u"P0000003.JPG"_s);
                 return file.resize(file.size() * 2 / 3);
             }},
            // A Huffman table no decoder accepts: the header walk and the ending still pass.
            {u"JPEG scans damaged"_s,
             [&] {
                 QByteArray bytes = ReadAll(pic + u"P0000005.JPG"_s);
                 // The main picture's last table before its scan, not the Exif thumbnail's.
                 const qsizetype table =
                     bytes.lastIndexOf("\xFF\xC4", bytes.lastIndexOf("\xFF\xDA"));
                 if (table < 0) {
                     return false;
                 }
                 for (qsizetype i = table + 5; i < table + 21; ++i) {
                     bytes[i] = char(0xFF);
                 }
                 return WriteAll(pic + u"P0000005.JPG"_s, bytes);
             }},
            {u"photograph of 30万画素"_s,
             [&] {
                 const ExifFacts& facts = written.photos[1].exif;
                 return RewriteJpeg(pic + u"P0000002.JPG"_s, facts, {640, 480},
                                    facts.dateTimeOriginal);
             }},
            {u"photograph of 1200万画素"_s,
             [&] {
                 const ExifFacts& facts = written.photos[0].exif;
                 return RewriteJpeg(pic + u"P0000001.JPG"_s, facts, {4000, 3000},
                                    facts.dateTimeOriginal);
             }},
            {u"Exif date two days later"_s,
             [&] {
                 ExifFacts facts = written.photos[3].exif;
                 const QDateTime taken = facts.dateTimeOriginal;
                 facts.dateTimeOriginal = taken.addDays(2);
                 return RewriteJpeg(pic + u"P0000004.JPG"_s, facts, {1280, 960}, taken);
             }},
            // Late in the evening two days before: whole days count, not hours.
            {u"Exif date two days earlier"_s,
             [&] {
                 ExifFacts facts = written.photos[0].exif;
                 const QDateTime taken = facts.dateTimeOriginal;
                 facts.dateTimeOriginal = QDateTime(taken.date().addDays(-2), QTime(23, 59));
                 return RewriteJpeg(pic + u"P0000001.JPG"_s, facts, {1280, 960}, taken);
             }},
            {u"file time two days off"_s,
             [&] {
                 return SetFileTime(pic + u"P0000006.JPG"_s,
                                    written.photos[5].exif.dateTimeOriginal.addDays(-2));
             }},
            {u"no Exif"_s,
             [&] {
                 ExifFacts facts = written.photos[2].exif;
                 facts.writeExif = false;
                 return RewriteJpeg(pic + u"P0000003.JPG"_s, facts, {1280, 960},
                                    written.photos[2].exif.dateTimeOriginal);
             }},
            // The stand-in hash checker answers the code written into the file.
            {u"photograph tampered"_s,
             [&] {
                 ToviVerifierLibrary::SetProgramPathOverride(
                     QStringLiteral(TOVI_STANDIN_DIR "/full"));
                 QFile file(pic + u"P0000002.JPG"_s);
                 return file.open(QIODevice::Append) && file.write("@JCOMSIA=0@") > 0;
             }},
            {u"verifier cannot judge"_s,
             [&] {
                 ToviVerifierLibrary::SetProgramPathOverride(
                     QStringLiteral(TOVI_STANDIN_DIR "/full"));
                 for (int i = 1; i <= 6; ++i) {
                     QFile file(pic + u"P%1.JPG"_s.arg(i, 7, 10, QLatin1Char('0')));
                     if (!file.open(QIODevice::Append) ||
                         file.write(i == 5 ? "@JCOMSIA=-3@" : "@JCOMSIA=1@") <= 0) {
                         return false;
                     }
                 }
                 return true;
             }},
            {u"no verifier"_s, [] { return true; }},
        };
        if (fault.startsWith(u"strict"_s)) {
            ToviItemDef::SetProgramPathOverride(temp.filePath(u"strict"_s));
        }
        QVERIFY2(plants.contains(fault), qPrintable(fault));
        QVERIFY(plants[fault]());
        if (fault == u"JPEG scans damaged"_s) {  // the decoder says why: no failure here
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"Huffman"_s));
        }

        ToviFindingCollector findings;
        Check(folder, FamilyOf(generation), findings);
        QStringList codes;  // what the checks say they report
        for (const char* c : ToviDeliveryChecker::Standard(true)->Codes()) {
            codes << QString::fromLatin1(c);
        }
        QList<QString> found;
        for (const ToviCheckFinding& f : findings.Findings()) {
            QVERIFY2(codes.contains(QLatin1String(f.code)), f.code);
            if (f.severity == ToviCheckFinding::Error || code == QLatin1String(f.code)) {
                found << u"%1 %2 %3"_s.arg(QLatin1String(f.code)).arg(f.index).arg(Where(f));
                QVERIFY2(severity < 0 || f.severity == severity, f.code);
            }
        }
        QCOMPARE(found, QList<QString>{u"%1 %2 %3"_s.arg(code).arg(index).arg(where)});
        if (fifo) {
            QVERIFY(!fifo->Opened());
        }
    }

    // Findings of a 写真情報 go to its photograph counted without the ones left out; those of
    // one left out, and of elements between photographs, are about no photograph; photographs
    // the load never reached are reported as such. Bytes the load could not decode are told
    // once besides the characters they became.
    void structureAroundLeftOut_data() {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("unknown in one left out and one after")
            << u"left out"_s
            << QStringList{u"structure.unknown 2 撮影者"_s, u"load.photo-dropped -1 シリアル番号"_s,
                           u"structure.unknown -1 撮影者"_s};
        QTest::newRow("unknown between photographs")
            << u"between"_s
            << QStringList{u"structure.unread -1 写真情報"_s, u"structure.unknown -1 区切り"_s};
        QTest::newRow("undecodable bytes in two titles")
            << u"undecodable"_s
            << QStringList{u"text.non-jis 1 写真タイトル"_s, u"text.non-jis 4 写真タイトル"_s,
                           u"load.undecodable -1 "_s};
    }
    void structureAroundLeftOut() {
        QFETCH(QString, fault);
        WrittenDelivery written;
        const QString folder = Write(written);
        QVERIFY(!folder.isEmpty());
        if (fault == u"left out"_s) {
            QVERIFY(MakeStrict(temp.filePath(u"strict"_s), {u"シリアル番号"_s}));
            ToviItemDef::SetProgramPathOverride(temp.filePath(u"strict"_s));
            QVERIFY(EditPhoto(folder, 1, u"<シリアル番号>.*?</シリアル番号>"_s, QString()));
            QVERIFY(QFile::remove(folder + u"/PIC/P0000002.JPG"_s));
            QVERIFY(QFile::remove(folder + u"/DRA/D0000002.JPG"_s));
            QVERIFY(AddUnknown(folder, 1) && AddUnknown(folder, 3));
        } else if (fault == u"between"_s) {
            QVERIFY(EditPhoto(folder, 4, u"^<写真情報>"_s, u"<区切り/><写真情報>"_s));
        } else {
            // 0xFF is no Shift_JIS byte.
            QByteArray xml = ReadAll(folder + u"/PHOTO.XML"_s);
            const QByteArray title = Cp932::FromUnicode(u"<写真タイトル>"_s);
            qsizetype at = -1;
            for (int i = 0; i < 5; ++i) {
                at = xml.indexOf(title, at + 1);
                if (i == 1 || i == 4) {
                    xml.insert(at + title.size(), "\xFF");
                }
            }
            QVERIFY(WriteAll(folder + u"/PHOTO.XML"_s, xml));
        }
        ToviFindingCollector findings;
        Check(folder, 0, findings, false);
        QStringList found;
        for (const ToviCheckFinding& f : findings.Findings()) {
            if (!QByteArrayView(f.code).startsWith("file.")) {
                found << u"%1 %2 %3"_s.arg(QLatin1String(f.code)).arg(f.index).arg(f.item);
            }
        }
        QTEST(found, "expected");
        if (fault == u"left out"_s) {
            QVERIFY2(findings.Findings().back().message.startsWith(u"2番目の写真情報"_s),
                     qPrintable(findings.Findings().back().message));
        }
    }

    // A hostile photograph (thousands of unknown elements, one nested fifty thousand deep)
    // gives a bounded number of findings; a PHOTO.XML gone since the load gives one finding.
    void structureBoundedAndUnreadable() {
        WrittenDelivery written;
        const QString folder = Write(written);
        QVERIFY(!folder.isEmpty());
        const QString nested = u"<深>"_s.repeated(50000) + u"</深>"_s.repeated(50000);
        QVERIFY(EditPhoto(folder, 0, u"(</撮影年月日>)"_s,
                          u"\\1"_s + u"<余分/>"_s.repeated(5000) + nested));
        std::unique_ptr<ToviData> document =
            ToviEnouDataFactory().Create(nullptr, folder, PhotoXMLMlit);
        QVERIFY(document);
        QCOMPARE(document->GetTotalCountPhoto(), 6);
        ToviFindingCollector findings;
        QVERIFY(ToviDeliveryChecker::Standard(false)->Run(*document, findings));
        QStringList found;
        for (const ToviCheckFinding& f : findings.Findings()) {
            found << u"%1 %2 %3"_s.arg(QLatin1String(f.code)).arg(f.index).arg(f.item);
        }
        QCOMPARE(found.size(), ToviStructureCheck::kFindingsPerElement + 1);
        QCOMPARE(found.first(), u"structure.unknown 0 余分"_s);
        QVERIFY2(findings.Findings().back().message.contains(u"4981"_s),
                 qPrintable(findings.Findings().back().message));

        QVERIFY(QFile::remove(folder + u"/PHOTO.XML"_s));
        ToviFindingCollector gone;
        QVERIFY(ToviDeliveryChecker::Standard(false)->Run(*document, gone));
        found.clear();
        for (const ToviCheckFinding& f : gone.Findings()) {
            found << u"%1 %2 %3"_s.arg(QLatin1String(f.code)).arg(f.index).arg(f.file);
        }
        QCOMPARE(found, QStringList{u"structure.unreadable -1 PHOTO.XML"_s});
    }

    // A file name that reaches out of PIC/ names no file, whatever lies there (here a FIFO
    // that would hold up anything opening it): missing, and the photograph's own file stray.
    void nameReachingOut_data() {
        QTest::addColumn<QString>("value");  // {fifo}: the FIFO's path; {up}: PIC/ to temp
        QTest::newRow("up to a FIFO") << u"{up}/trap"_s;
        QTest::newRow("absolute") << u"{fifo}"_s;
        QTest::newRow("backslashes") << u"..\\..\\..\\trap"_s;
        QTest::newRow("a folder") << u"../DRA"_s;
        QTest::newRow("very long") << QString(70000, u'P');
    }
    void nameReachingOut() {
        QFETCH(QString, value);
        WrittenDelivery written;
        const QString folder = Write(written);
        QVERIFY(!folder.isEmpty());
        fifo = std::make_unique<FifoTrap>(temp.filePath(u"trap"_s));
        QVERIFY(fifo->IsValid());
        value.replace(u"{fifo}"_s, temp.filePath(u"trap"_s))
            .replace(u"{up}"_s, QDir(folder + u"/PIC"_s).relativeFilePath(temp.path()));
        QVERIFY(SetValue(folder, 1, u"写真ファイル名"_s, value));

        ToviFindingCollector findings;
        Check(folder, 0, findings);
        QStringList errors;
        for (const ToviCheckFinding& f : findings.Findings()) {
            if (f.severity == ToviCheckFinding::Error) {
                errors << u"%1 %2 %3"_s.arg(QLatin1String(f.code)).arg(f.index).arg(Where(f));
            }
        }
        QCOMPARE(errors, (QStringList{u"file.missing 1 PIC/"_s + value,
                                      u"file.stray -1 PIC/P0000002.JPG"_s}));
        QVERIFY(!fifo->Opened());
    }

    // The writer's own deliveries are clean in every generation: their dates lie in the work
    // period the index file gives and agree with the files' Exif dates and times.
    void cleanDelivery_data() {
        QTest::addColumn<Generation>("generation");
        for (const Generation generation : AllGenerations()) {
            QTest::newRow(qPrintable(SectionName(generation))) << generation;
        }
    }
    void cleanDelivery() {
        QFETCH(Generation, generation);
        WrittenDelivery written;
        const QString folder = Write(written, generation);
        QVERIFY(!folder.isEmpty());
        ToviFindingCollector findings;
        Check(folder, FamilyOf(generation), findings);
        QStringList all;
        for (const ToviCheckFinding& f : findings.Findings()) {
            all << u"%1 %2 %3"_s.arg(QLatin1String(f.code)).arg(f.index).arg(f.message);
        }
        // Without verifiers, one note says the tamper check did not run; nothing else.
        QCOMPARE(all.size(), 1);
        QVERIFY2(all.first().startsWith(u"tamper.unavailable -1 "_s), qPrintable(all.join(u'\n')));
    }

    // Which classification items a photograph needs. Each fault row leaves one item out of
    // photograph 2; the clean rows are the categories and flags that need nothing, among them
    // a 着手前及び完成写真 photograph that is a 提出頻度写真 and has no 工種. "-" leaves an
    // element out, "" writes it empty.
    void requiredItems_data() {
        QTest::addColumn<Generation>("generation");
        QTest::addColumn<QStringList>("classification");  // 大分類 区分 工種 種別 細別
        QTest::addColumn<QString>("submission");
        QTest::addColumn<QString>("expected");  // "code item", empty for none
        const auto row = [](const char* name, Generation generation, const char* values,
                            const char* submission, const char* expected) {
            QTest::newRow(name) << generation << QString::fromUtf8(values).split(u' ')
                                << QString::fromLatin1(submission) << QString::fromUtf8(expected);
        };
        const Generation mlit = Generation::Mlit20;
        const Generation nexco = Generation::Nexco24;
        row("施工状況 submitted without 工種", mlit, "工事 施工状況写真 - 擁壁工 場所打擁壁工", "1",
            "item.required 工種");
        // Whether the work breakdown has a 種別 or 細別 under the one named is not in the
        // delivery: a note, and only once the level above is there.
        row("品質管理 submitted, 細別 empty", mlit, "工事 品質管理写真 道路改良 擁壁工 ''", "1",
            "item.required 細別 note");
        row("出来形 submitted, 種別 and 細別 empty", mlit, "工事 出来形管理写真 道路改良 - -", "1",
            "item.required 種別 note");
        row("works without 写真区分", mlit, "工事 - 道路改良 擁壁工 場所打擁壁工", "0",
            "item.required 写真区分");
        row("works with 写真区分 empty, H14", Generation::Mlit14, "工事 '' - - -", "0",
            "item.required 写真区分");
        row("写真区分 off the list", mlit, "工事 施工写真 道路改良 擁壁工 場所打擁壁工", "1",
            "item.value 写真区分 warning");
        row("NEXCO 完成写真 without 工種", nexco, "工事 完成写真 - - -", "0", "item.required 工種");
        row("NEXCO 出来形 without 種別", nexco, "工事 出来形管理写真 道路改良 - 場所打擁壁工", "0",
            "item.required 種別");
        row("着手前及び完成 submitted without 工種", mlit, "工事 着手前及び完成写真 - - -", "1",
            "");
        row("着手前及び完成 submitted, items empty", mlit, "工事 着手前及び完成写真 '' '' ''", "1",
            "");
        row("災害 submitted without 工種", mlit, "工事 災害写真 - - -", "1", "");
        row("施工状況 not submitted without 工種", mlit, "工事 施工状況写真 - - -", "0", "");
        row("survey without 写真区分 or 工種", mlit, "測量 - - - -", "1", "");
        row("NEXCO 完成写真 with 工種 only", nexco, "工事 完成写真 道路改良 - -", "0", "");
        row("NEXCO 着手前写真 without any", nexco, "工事 着手前写真 - - -", "1", "");
        // Without a 写真区分 the category rules cannot be judged, and nothing is guessed.
        row("NEXCO without 写真区分 or 工種", nexco, "工事 - - - -", "1", "");
    }
    void requiredItems() {
        QFETCH(Generation, generation);
        QFETCH(QStringList, classification);
        QFETCH(QString, submission);
        QFETCH(QString, expected);
        WrittenDelivery written;
        const QString folder = Write(written, generation);
        QVERIFY(!folder.isEmpty());
        static const QStringList kTags{u"写真-大分類"_s, u"写真区分"_s, u"工種"_s, u"種別"_s,
                                       u"細別"_s};
        QString block;
        for (int i = 0; i < kTags.size(); ++i) {
            const QString value = classification.value(i);
            if (value != u"-"_s) {
                block += u"<%1>%2</%1>"_s.arg(kTags[i], value == u"''"_s ? QString() : value);
            }
        }
        block += u"<写真タイトル>全景</写真タイトル>"_s;
        QVERIFY(SetValue(folder, 2, u"撮影工種区分"_s, block));
        QVERIFY(SetValue(folder, 2, u"提出頻度写真"_s, submission));

        ToviFindingCollector findings;
        Check(folder, FamilyOf(generation), findings);
        const QString code = expected.section(u' ', 0, 0);
        QStringList found;
        for (const ToviCheckFinding& f : findings.Findings()) {
            if (f.severity == ToviCheckFinding::Error || code == QLatin1String(f.code)) {
                found << u"%1 %2 %3 %4"_s.arg(QLatin1String(f.code))
                             .arg(f.index)
                             .arg(f.item,
                                  QLatin1String(ToviCheckFinding::SeverityName(f.severity)));
            }
        }
        const QString severity = expected.section(u' ', 2, 2);
        QCOMPARE(found, expected.isEmpty() ? QStringList()
                                           : QStringList{u"%1 2 %2 %3"_s.arg(
                                                 code, expected.section(u' ', 1, 1),
                                                 severity.isEmpty() ? u"error"_s : severity)});
    }

    // Lengths against each generation's limits, at the limit and one past it.
    void lengths_data() {
        QTest::addColumn<Generation>("generation");
        QTest::addColumn<QString>("tag");
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("tooLong");
        QTest::newRow("title of 128")
            << Generation::Mlit20 << u"写真タイトル"_s << QString(128, u'景') << true;
        QTest::newRow("title of 127")
            << Generation::Mlit20 << u"写真タイトル"_s << QString(127, u'景') << false;
        QTest::newRow("title of 128 half-width")
            << Generation::Mlit20 << u"写真タイトル"_s << QString(128, u'A') << true;
        QTest::newRow("category of 17, H14")
            << Generation::Mlit14 << u"写真区分"_s << QString(17, u'区') << true;
        QTest::newRow("category of 16, H16")
            << Generation::Mlit16 << u"写真区分"_s << QString(16, u'区') << false;
        QTest::newRow("category of 17 where no limit is known")
            << Generation::Mlit18 << u"写真区分"_s << QString(17, u'区') << false;
    }
    void lengths() {
        QFETCH(Generation, generation);
        QFETCH(QString, tag);
        QFETCH(QString, value);
        QFETCH(bool, tooLong);
        WrittenDelivery written;
        const QString folder = Write(written, generation);
        QVERIFY(!folder.isEmpty());
        // A survey photograph, whose 写真区分 is free text.
        QVERIFY(SetValue(folder, 2, u"撮影工種区分"_s,
                         u"<写真-大分類>測量</写真-大分類><写真区分>区分</写真区分>"
                         "<写真タイトル>全景</写真タイトル>"_s));
        QVERIFY(SetValue(folder, 2, tag, value));

        ToviFindingCollector findings;
        Check(folder, FamilyOf(generation), findings);
        QStringList errors;
        for (const ToviCheckFinding& f : findings.Findings()) {
            if (f.severity == ToviCheckFinding::Error) {
                errors << u"%1 %2 %3"_s.arg(QLatin1String(f.code)).arg(f.index).arg(f.item);
            }
        }
        QCOMPARE(errors, tooLong ? QStringList{u"item.too-long 2 "_s + tag} : QStringList());
        QCOMPARE(ToviLengthCheck::Length(u"\U00020BB7野家"_s), 3);
    }

    // The kinds of characters, at the edges of the code page's rows.
    void characterKinds_data() {
        QTest::addColumn<uint>("character");
        QTest::addColumn<int>("kind");
        QTest::newRow("kanji") << uint(0x6F22) << int(ToviTextCheck::Jis);
        QTest::newRow("full-width digit") << uint(0xFF11) << int(ToviTextCheck::Jis);
        QTest::newRow("not-equal sign, row 2") << uint(0x2252) << int(ToviTextCheck::Jis);
        QTest::newRow("circled 1, first of row 13") << uint(0x2460) << int(ToviTextCheck::Vendor);
        QTest::newRow("roman III") << uint(0x2162) << int(ToviTextCheck::Vendor);
        QTest::newRow("IBM kanji 纊") << uint(0x7E8A) << int(ToviTextCheck::Vendor);
        QTest::newRow("first user-defined") << uint(0xE000) << int(ToviTextCheck::UserDefined);
        QTest::newRow("last user-defined") << uint(0xE757) << int(ToviTextCheck::UserDefined);
        QTest::newRow("half-width ka") << uint(0xFF76) << int(ToviTextCheck::HalfWidthKana);
        QTest::newRow("hangul") << uint(0xD55C) << int(ToviTextCheck::NoCp932);
        QTest::newRow("emoji") << uint(0x1F600) << int(ToviTextCheck::NoCp932);
    }
    void characterKinds() {
        QFETCH(uint, character);
        QFETCH(int, kind);
        QCOMPARE(int(ToviTextCheck::Classify(char32_t(character))), kind);
    }

    // Progress rises to the number of photographs; a cancel stops the run within the next
    // thousand photographs (32 when images are read) and says so.
    void progressAndCancel() {
        DeliveryOptions options;
        options.photoCount = 5000;
        options.images = DeliveryOptions::Images::None;  // every photograph a missing file
        QString error;
        WrittenDelivery written;
        QVERIFY(WriteDelivery(temp.filePath(u"large"_s), options, &written, &error));
        std::unique_ptr<ToviData> document =
            ToviEnouDataFactory().Create(nullptr, written.photoFolder, PhotoXMLMlit);
        QVERIFY(document);

        std::unique_ptr<ToviDeliveryChecker> checker = ToviDeliveryChecker::Standard(false);
        qint64 last = 0;
        qint64 total = 0;
        checker->SetProgress([&](qint64 done, qint64 all) {
            QVERIFY(done >= last);
            last = done;
            total = all;
        });
        ToviFindingCollector all;
        QVERIFY(checker->Run(*document, all));
        QCOMPARE(last, total);
        QCOMPARE(total, qint64(5000));
        QVERIFY(all.Count(ToviCheckFinding::Error) >= 5000);

        std::atomic<bool> cancel{false};
        checker->SetCancelFlag(&cancel);
        checker->SetProgress([&](qint64, qint64) { cancel = true; });
        ToviFindingCollector some;
        QVERIFY(!checker->Run(*document, some));
        QVERIFY(some.Findings().size() < all.Findings().size());

        // Checks that read images report, and may stop, every 32 photographs.
        std::unique_ptr<ToviDeliveryChecker> reading = ToviDeliveryChecker::Standard(true);
        qint64 first = 0;
        reading->SetProgress([&](qint64 done, qint64) {
            if (first == 0) {
                first = done;
            }
        });
        ToviFindingCollector read;
        QVERIFY(reading->Run(*document, read));
        QCOMPARE(first, qint64(32));
    }

    // The Exif original date read from a JPEG's header bytes, as the writer of the fixtures
    // lays them out, and what a broken or blank block gives.
    void exifOriginalDate_data() {
        QTest::addColumn<QByteArray>("jpeg");
        QTest::addColumn<QDateTime>("expected");
        QImage picture(32, 24, QImage::Format_RGB32);
        picture.fill(Qt::gray);
        ExifFacts facts;
        facts.dateTimeOriginal = QDateTime(QDate(2024, 5, 20), QTime(10, 15, 30));
        const QByteArray dated = MakeExifJpeg(picture, facts);
        const qsizetype at = dated.indexOf("2024:05:20 10:15:30");
        QVERIFY(at > 0);
        const auto patched = [&](const QByteArray& text) {
            QByteArray bytes = dated;
            // Every copy (DateTime and DateTimeDigitized carry the same text).
            for (qsizetype p = bytes.indexOf("2024:05:20 10:15:30"); p >= 0;
                 p = bytes.indexOf("2024:05:20 10:15:30", p + 1)) {
                bytes.replace(p, text.size(), text);
            }
            return bytes;
        };
        QTest::newRow("dated") << dated << facts.dateTimeOriginal;
        QTest::newRow("dashes") << patched("2024-05-20 10:15:30") << facts.dateTimeOriginal;
        QTest::newRow("zero date") << patched("0000:00:00 00:00:00") << QDateTime();
        QTest::newRow("blank date") << patched("                   ") << QDateTime();
        ExifFacts undated;
        QTest::newRow("no date") << MakeExifJpeg(picture, undated) << QDateTime();
        ExifFacts plain;
        plain.writeExif = false;
        QTest::newRow("no Exif") << MakeExifJpeg(picture, plain) << QDateTime();
        QTest::newRow("cut inside the block") << dated.left(at - 40) << QDateTime();
        QByteArray wrongOrder = dated;
        wrongOrder[dated.indexOf("Exif") + 6] = 'X';  // "XI*" is no byte order
        QTest::newRow("no byte order") << wrongOrder << QDateTime();
        QTest::newRow("not a JPEG") << QByteArray("GIF89a") << QDateTime();
    }
    void exifOriginalDate() {
        QFETCH(QByteArray, jpeg);
        QFETCH(QDateTime, expected);
        QCOMPARE(ToviDateTable::ExifOriginalDate(jpeg), expected);
    }

    // A day apart passes, whatever the hours; more is flagged either way, from either side.
    void dateDifference_data() {
        QTest::addColumn<QString>("shot");
        QTest::addColumn<QDateTime>("exif");
        QTest::addColumn<QDateTime>("modified");
        QTest::addColumn<bool>("differs");
        const QDate day(2024, 4, 1);
        const QDateTime noon(day, QTime(12, 0));
        QTest::newRow("same day") << u"2024-04-01"_s << noon << noon << false;
        QTest::newRow("Exif next day, late")
            << u"2024-04-01"_s << QDateTime(day.addDays(1), QTime(23, 59)) << noon << false;
        QTest::newRow("Exif two days later")
            << u"2024-04-01"_s << QDateTime(day.addDays(2), QTime(0, 1)) << noon << true;
        QTest::newRow("file two days before")
            << u"2024-04-01"_s << noon << noon.addDays(-2) << true;
        QTest::newRow("no Exif, file far")
            << u"2024-04-01"_s << QDateTime() << noon.addDays(40) << true;
        QTest::newRow("no date to compare")
            << u"2024/04/01"_s << noon.addDays(9) << noon.addDays(9) << false;
    }
    void dateDifference() {
        QFETCH(QString, shot);
        QFETCH(QDateTime, exif);
        QFETCH(QDateTime, modified);
        QFETCH(bool, differs);
        ToviDateRow row;
        row.shotText = shot;
        row.shot = ToviDateTable::ShotDate(shot);
        row.exif = exif;
        row.modified = modified;
        QCOMPARE(row.Differs(), differs);
        QCOMPARE(ToviDateTable::Cells(row).last(), differs ? u"あり"_s : QString());
    }

    // Fields are quoted only when RFC 4180 asks for it, quotes doubled.
    void csvField_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("field");
        QTest::newRow("plain") << u"P0000001.JPG"_s << u"P0000001.JPG"_s;
        QTest::newRow("Japanese") << u"撮影年月日"_s << u"撮影年月日"_s;
        QTest::newRow("empty") << QString() << QString();
        QTest::newRow("comma") << u"A,B"_s << u"\"A,B\""_s;
        QTest::newRow("quote") << u"5\" 杭"_s << u"\"5\"\" 杭\""_s;
        QTest::newRow("line break") << u"一\r\n二"_s << u"\"一\r\n二\""_s;
    }
    void csvField() {
        QFETCH(QString, text);
        QFETCH(QString, field);
        QCOMPARE(ToviDateTable::CsvField(text), field);
    }

    // The date table of a written delivery in the order asked, those out of range left out; a
    // cancel before the start gives nothing.
    void dateTableBuild() {
        WrittenDelivery written;
        const QString folder = Write(written);
        QVERIFY(!folder.isEmpty());
        std::unique_ptr<ToviData> document =
            ToviEnouDataFactory().Create(nullptr, folder, PhotoXMLMlit);
        QVERIFY(document);
        ToviDateTable table;
        QVERIFY(table.Build(*document, {4, 1, 99, -1}));
        QCOMPARE(table.Rows().size(), size_t(2));
        const ToviDateRow& row = table.Rows()[0];
        QCOMPARE(row.index, 4);
        QCOMPARE(row.file, u"PIC/"_s + written.photos[4].fileName);
        QCOMPARE(row.exif, written.photos[4].exif.dateTimeOriginal);
        QCOMPARE(row.shot, written.photos[4].exif.dateTimeOriginal.date());
        QVERIFY(!row.Differs());
        QCOMPARE(table.Rows()[1].index, 1);

        std::atomic<bool> cancel{true};
        QVERIFY(!table.Build(*document, {0, 1, 2}, &cancel));
        QVERIFY(table.Rows().empty());
    }

    // What a file's first bytes say it is, against what its name promises.
    void sniff_data() {
        using F = ToviImageFileCheck::Format;
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<int>("format");
        QTest::newRow("JPEG") << QByteArray("\xFF\xD8\xFF\xE1\x00\x10") << int(F::Jpeg);
        QTest::newRow("JPEG, SOI alone") << QByteArray("\xFF\xD8") << int(F::Other);
        QTest::newRow("TIFF, Intel") << QByteArray("II*\0\x08\0\0\0", 8) << int(F::Tiff);
        QTest::newRow("TIFF, Motorola") << QByteArray("MM\0*\0\0\0\x08", 8) << int(F::Tiff);
        QTest::newRow("PNG") << QByteArray("\x89PNG\r\n\x1A\n") << int(F::Png);
        QTest::newRow("GIF") << QByteArray("GIF87a") << int(F::Gif);
        QTest::newRow("BMP") << QByteArray("BM6\0") << int(F::Bmp);
        QTest::newRow("SVG after a mark and a comment")
            << QByteArray("\xEF\xBB\xBF<?xml version=\"1.0\"?>\n<!-- 図 -->\n<svg xmlns=\"\">")
            << int(F::Svg);
        QTest::newRow("XML that is no SVG")
            << QByteArray("<?xml version=\"1.0\"?><photodata>") << int(F::Other);
        QTest::newRow("text") << QByteArray("P0000001") << int(F::Other);
        QTest::newRow("empty") << QByteArray() << int(F::None);
    }
    void sniff() {
        QFETCH(QByteArray, head);
        QFETCH(int, format);
        QCOMPARE(int(ToviImageFileCheck::Sniff(head)), format);
    }
};

QTEST_GUILESS_MAIN(ToviChecksTest)
#include "ToviChecksTest.moc"

#include "imagefacts/ToviExifInfo.h"
#include "platform/ToviProfile.h"
#include "tests/imagefacts/ExifFixture.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using namespace exiffixture;

namespace {

const QString kUnknown = QStringLiteral("(不明)");

QStringList Titles(const ToviTextPairArray& pairs) {
    QStringList titles;
    pairs.GetItems(titles);
    return titles;
}

QStringList Values(const ToviTextPairArray& pairs) {
    QStringList values;
    pairs.GetValues(values);
    return values;
}

QList<const ToviTextPairArray*> Groups(const ToviExifInfo& info) {
    return {&info.GetDate(),   &info.GetImage(), &info.GetMaker(),
            &info.GetFormat(), &info.GetShoot(), &info.GetGPS()};
}

}  // namespace

// The six Exif groups of a photograph: their rows in order, the copy and clear rules, and the SVG
// photograph read through its main image work file.
class ToviExifInfoTest : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void readsSixGroupsInRowOrder();
    void fileWithoutExifReadsUnknown_data();
    void fileWithoutExifReadsUnknown();
    void emptyPathStaysUnloaded();
    void copyAndClearKeepTheImageGroup();
    void svgReadThroughWorkFile();
    void svgWithoutMainImageLeavesNoStaleWorkFile();
    void lowerCaseSvgIsReadAsItStands();

private:
    QString Path(const QString& name) const { return dir->filePath(name); }

    std::unique_ptr<QTemporaryDir> dir;
};

void ToviExifInfoTest::init() {
    dir = std::make_unique<QTemporaryDir>();
    QVERIFY(dir->isValid());
    ToviProfile::Instance().UseFile(Path(QStringLiteral("p.ini")));
    UseWorkFolder(dir->path());
    QTest::failOnWarning(QRegularExpression(QStringLiteral(".*")));
}

void ToviExifInfoTest::cleanup() {
    ToviEnvironment::SetSettingsPathsForTesting(QString(), QString());
}

void ToviExifInfoTest::readsSixGroupsInRowOrder() {
    ExifFacts facts;
    facts.dateTimeOriginal = QDateTime(QDate(2023, 11, 2), QTime(14, 5, 0));
    facts.software = QStringLiteral("Tovi 1.0");
    facts.artist = QStringLiteral("佐藤");
    facts.copyright = QStringLiteral("Orvane");
    facts.hasGps = true;
    facts.latitude = 35.6581;
    facts.longitude = 139.74135;
    facts.altitude = 12.3;
    const QString path = Path(QStringLiteral("P0000001.JPG"));
    QVERIFY(WriteExifJpeg(path, Picture({640, 480}), facts));

    ToviExifInfo info;
    info.Load(path);
    QVERIFY(info.IsLoaded());
    QCOMPARE(info.GetPath(), path);
    QVERIFY(info.GetMainImagePath().isEmpty());

    QCOMPARE(Values(info.GetDate()),
             QStringList({"2023/11/02 14:05:00", "2023/11/02 14:05:00", "2023/11/02 14:05:00"}));
    QCOMPARE(Values(info.GetImage()), QStringList({"640 x 480", "307200"}));
    QCOMPARE(Values(info.GetMaker()),
             QStringList({"ORVANE", "FIELD-CAM G7", "Tovi 1.0", "佐藤", "Orvane"}));
    QCOMPARE(Values(info.GetFormat()), QStringList({"2.30"}));
    // The group's own wording, which the look-up by title deliberately does not share.
    QCOMPARE(Titles(info.GetMaker())[3], QStringLiteral("作者名"));
    QCOMPARE(Titles(info.GetShoot())[4], QStringLiteral("レンズ最小F値"));
    QCOMPARE(Values(info.GetShoot()), QStringList({"1/250 秒", "1/250 秒", "F2.8", "0.0 EV", "F2.8",
                                                   "Multi-segment", "No flash", "4.5 mm", "F2.8"}));
    QCOMPARE(Values(info.GetGPS()), QStringList({"N 35°39'29.16\"", "E 139°44'28.86\"", "12.3 m"}));

    // Loaded once: a later change of the file is not noticed until the next Load.
    QVERIFY(WriteExifJpeg(path, Picture({64, 48}), ExifFacts()));
    QCOMPARE(info.GetImage()[0].GetValue(), QStringLiteral("640 x 480"));
}

void ToviExifInfoTest::fileWithoutExifReadsUnknown_data() {
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("plain JPEG") << MakeExifJpeg(Picture({64, 48}),
                                                Facts([](ExifFacts& f) { f.writeExif = false; }));
    QTest::newRow("missing file") << QByteArray("<none>");
}

void ToviExifInfoTest::fileWithoutExifReadsUnknown() {
    QFETCH(QByteArray, bytes);
    const QString path = Path(QStringLiteral("P0000001.JPG"));
    if (bytes != "<none>") {
        QVERIFY(WriteBytes(path, bytes));
    }
    ToviExifInfo info;
    info.Load(path);
    // Loaded all the same, with every row there so that positions still line up.
    QVERIFY(info.IsLoaded());
    const QList<qsizetype> sizes{3, 2, 5, 1, 9, 3};
    const QList<const ToviTextPairArray*> groups = Groups(info);
    for (int g = 0; g < groups.size(); ++g) {
        QCOMPARE(groups[g]->size(), sizes[g]);
        for (const ToviTextPair& pair : *groups[g]) {
            QCOMPARE(pair.GetValue(), kUnknown);
        }
    }
}

void ToviExifInfoTest::emptyPathStaysUnloaded() {
    ToviExifInfo info;
    info.Load(QString());
    QVERIFY(!info.IsLoaded());
    for (const ToviTextPairArray* group : Groups(info)) {
        QVERIFY(group->isEmpty());
    }
}

void ToviExifInfoTest::copyAndClearKeepTheImageGroup() {
    const QString big = Path(QStringLiteral("BIG.JPG"));
    const QString small = Path(QStringLiteral("SMALL.JPG"));
    QVERIFY(WriteExifJpeg(big, Picture({640, 480}), Facts([](ExifFacts& f) { f.make = "BIG"; })));
    QVERIFY(WriteExifJpeg(small, Picture({64, 48}), Facts([](ExifFacts& f) { f.make = "SML"; })));
    ToviExifInfo source;
    source.Load(big);

    // A new object copied from a loaded one: loaded, every group but the image group.
    const ToviExifInfo copy(source);
    QVERIFY(copy.IsLoaded());
    QCOMPARE(copy.GetPath(), big);
    QCOMPARE(copy.GetMaker()[0].GetValue(), QStringLiteral("BIG"));
    QCOMPARE(copy.GetDate().size(), 3);
    QCOMPARE(copy.GetShoot().size(), 9);
    QVERIFY(copy.GetImage().isEmpty());

    // Assignment leaves the target's own image group.
    ToviExifInfo target;
    target.Load(small);
    target = source;
    QCOMPARE(target.GetMaker()[0].GetValue(), QStringLiteral("BIG"));
    QCOMPARE(target.GetImage()[0].GetValue(), QStringLiteral("64 x 48"));

    source.Clear();
    QVERIFY(!source.IsLoaded());
    QVERIFY(source.GetPath().isEmpty());
    QVERIFY(source.GetDate().isEmpty() && source.GetMaker().isEmpty() &&
            source.GetFormat().isEmpty() && source.GetShoot().isEmpty() &&
            source.GetGPS().isEmpty());
    QCOMPARE(source.GetImage()[0].GetValue(), QStringLiteral("640 x 480"));
}

void ToviExifInfoTest::svgReadThroughWorkFile() {
    const QString svg = Path(QStringLiteral("P0000007.SVG"));
    QVERIFY(WriteBytes(svg, SvgWithJpeg(Facts([](ExifFacts& f) { f.make = "SVGCAM"; }))));

    ToviExifInfo info;
    // Load alone never writes the work file: without it every value is unknown.
    info.Load(svg);
    QVERIFY(info.IsLoaded());
    QCOMPARE(info.GetPath(), WorkFileOf(QStringLiteral("P0000007")));
    QCOMPARE(info.GetMaker()[0].GetValue(), kUnknown);

    info.MakeMainImageFromSvg(svg);
    QCOMPARE(info.GetMainImagePath(), WorkFileOf(QStringLiteral("P0000007")));
    QVERIFY(QFile::exists(info.GetMainImagePath()));
    info.Load(svg);
    QCOMPARE(info.GetPath(), info.GetMainImagePath());
    QCOMPARE(info.GetMaker()[0].GetValue(), QStringLiteral("SVGCAM"));
    QCOMPARE(info.GetImage()[0].GetValue(), QStringLiteral("64 x 48"));
}

void ToviExifInfoTest::svgWithoutMainImageLeavesNoStaleWorkFile() {
    // Two SVG photographs of one file title share the work file. The second has no main
    // image: it must read as unknown, not as the first one's camera.
    QVERIFY(QDir().mkpath(Path(QStringLiteral("a"))));
    QVERIFY(QDir().mkpath(Path(QStringLiteral("b"))));
    const QString first = Path(QStringLiteral("a/P0000001.SVG"));
    const QString second = Path(QStringLiteral("b/P0000001.SVG"));
    QVERIFY(WriteBytes(first, SvgWithJpeg(Facts([](ExifFacts& f) { f.make = "FIRST"; }))));
    QVERIFY(WriteBytes(second, SvgWithHref("data:image/jpeg;base64,####")));

    ToviExifInfo one;
    one.MakeMainImageFromSvg(first);
    one.Load(first);
    QCOMPARE(one.GetMaker()[0].GetValue(), QStringLiteral("FIRST"));

    ToviExifInfo two;
    two.MakeMainImageFromSvg(second);
    QCOMPARE(two.GetMainImagePath(), one.GetMainImagePath());
    QVERIFY(!QFile::exists(two.GetMainImagePath()));
    two.Load(second);
    QCOMPARE(two.GetMaker()[0].GetValue(), kUnknown);
}

void ToviExifInfoTest::lowerCaseSvgIsReadAsItStands() {
    const QString svg = Path(QStringLiteral("P0000002.svg"));
    QVERIFY(WriteBytes(svg, SvgWithJpeg(ExifFacts())));
    ToviExifInfo info;
    info.MakeMainImageFromSvg(svg);
    QVERIFY(info.GetMainImagePath().isEmpty());
    QVERIFY(!QFile::exists(WorkFileOf(QStringLiteral("P0000002"))));
    info.Load(svg);
    QVERIFY(info.IsLoaded());
    QCOMPARE(info.GetPath(), svg);
    QCOMPARE(info.GetMaker()[0].GetValue(), kUnknown);
}

QTEST_MAIN(ToviExifInfoTest)
#include "ToviExifInfoTest.moc"

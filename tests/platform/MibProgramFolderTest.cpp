#include "platform/MibFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;

// Where a program finds its data and the verifier libraries: beside itself in a build, under
// the prefix's share/ and lib/ folders when installed.
class MibProgramFolderTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;

    QString Path(const QString& relative) const { return temp.filePath(relative); }

    void Touch(const QString& relative) {
        QDir().mkpath(QFileInfo(Path(relative)).absolutePath());
        QFile file(Path(relative));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

private slots:
    void layouts_data() {
        QTest::addColumn<QStringList>("files");  // made under the fixture; "x/" a folder
        QTest::addColumn<QString>("program");    // the executable's folder
        QTest::addColumn<QString>("data");       // the answers, relative to the fixture
        QTest::addColumn<QString>("libraries");

        QTest::newRow("build tree") << QStringList{u"build/bin/READITEM.XML"_s} << u"build/bin"_s
                                    << u"build/bin/"_s << u"build/bin/"_s;
        QTest::newRow("installed")
            << QStringList{u"usr/bin/"_s, u"usr/share/tovicore/READITEM.XML"_s} << u"usr/bin/"_s
            << u"usr/share/tovicore/"_s << u"usr/lib/tovicore/"_s;
        // A build installed into a prefix under itself is still run from the build.
        QTest::newRow("build beside an installed copy")
            << QStringList{u"b/bin/READITEM.XML"_s, u"b/share/tovicore/READITEM.XML"_s}
            << u"b/bin"_s << u"b/bin/"_s << u"b/bin/"_s;
        // The data folder decides that the copy is installed, even when it lacks the file: the
        // message about it then names the folder the file belongs in.
        QTest::newRow("installed, data file missing")
            << QStringList{u"opt/bin/"_s, u"opt/share/tovicore/"_s} << u"opt/bin/"_s
            << u"opt/share/tovicore/"_s << u"opt/lib/tovicore/"_s;
        QTest::newRow("neither layout")
            << QStringList{u"loose/bin/"_s} << u"loose/bin"_s << u"loose/bin/"_s << u"loose/bin/"_s;
        // Only a regular file marks a build; a folder of that name does not.
        QTest::newRow("READITEM.XML a folder")
            << QStringList{u"odd/bin/READITEM.XML/"_s, u"odd/share/tovicore/"_s} << u"odd/bin/"_s
            << u"odd/share/tovicore/"_s << u"odd/lib/tovicore/"_s;
        // share/tovicore must be a folder: a file of that name is no installed copy.
        QTest::newRow("share/tovicore a file") << QStringList{u"f/bin/"_s, u"f/share/tovicore"_s}
                                               << u"f/bin/"_s << u"f/bin/"_s << u"f/bin/"_s;
    }

    void layouts() {
        QFETCH(QStringList, files);
        QFETCH(QString, program);
        QFETCH(QString, data);
        QFETCH(QString, libraries);
        QVERIFY(temp.isValid());
        for (const QString& file : files) {
            if (file.endsWith(QLatin1Char('/'))) {
                QVERIFY(QDir().mkpath(Path(file)));
            } else {
                Touch(file);
            }
        }
        const QString root = MibNormalDir(temp.path());
        QCOMPARE(MibProgramFolderOf(Path(program), MibProgramFiles::Data), root + data);
        QCOMPARE(MibProgramFolderOf(Path(program), MibProgramFiles::Libraries), root + libraries);
    }

    void unknownProgramFolder() {
        QCOMPARE(MibProgramFolderOf(QString(), MibProgramFiles::Data), QString());
        QCOMPARE(MibProgramFolderOf(QString(), MibProgramFiles::Libraries), QString());
    }

    // The test runs from the build, whose data the build copies beside it.
    void runningFromTheBuild() {
        const QString here = MibNormalDir(QCoreApplication::applicationDirPath());
        QCOMPARE(MibProgramFolder(MibProgramFiles::Data), here);
        QCOMPARE(MibProgramFolder(MibProgramFiles::Libraries), here);
    }
};

QTEST_GUILESS_MAIN(MibProgramFolderTest)
#include "MibProgramFolderTest.moc"

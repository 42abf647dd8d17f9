#include "platform/ToviEnvironment.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <vector>

using namespace Qt::StringLiterals;

namespace {

void WriteText(const QString& path, const QByteArray& text) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}

}  // namespace

class ToviEnvironmentTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        home = qgetenv("HOME");
        configHome = qgetenv("XDG_CONFIG_HOME");
        tmp = qgetenv("TMPDIR");
    }
    void cleanupTestCase() {
        for (const auto& [name, value] :
             {std::pair("HOME", home), std::pair("XDG_CONFIG_HOME", configHome),
              std::pair("TMPDIR", tmp)}) {
            if (value.isEmpty()) {
                qunsetenv(name);
            } else {
                qputenv(name, value);
            }
        }
    }
    void init() {
        cleanupTestCase();  // the fixture itself goes in the real temporary folder
        dir = std::make_unique<QTemporaryDir>();
        QVERIFY(dir->isValid());
        // The user's folders, the temporary folder and both settings files all live in the
        // fixture, so nothing of the real account is read or written.
        qputenv("HOME", QFile::encodeName(Path(u"home"_s)));
        qunsetenv("XDG_CONFIG_HOME");
        qunsetenv("XDG_CACHE_HOME");
        qputenv("TMPDIR", QFile::encodeName(Path(u"tmp"_s)));
        for (const char* folder : {"home/Documents", "tmp"}) {
            QVERIFY(QDir().mkpath(Path(QLatin1String(folder))));
        }
        ToviEnvironment::SetSettingsPathsForTesting(Path(u"user.ini"_s), Path(u"system.ini"_s));
    }
    void cleanup() {
        ToviEnvironment::SetSettingsPathsForTesting(QString(), QString());
        ToviEnvironment::SetMountTableForTesting(QString());
        ToviEnvironment::SetBlockDevicesForTesting(QString());
    }
    // The work folder from the user's value, else the newest installed product's folder two
    // levels above its program folder, else the user's cache folder. %1 stands for the
    // fixture folder; products are "product/version=program folder".
    void workFolder_data() {
        QTest::addColumn<QString>("value");       // null: nothing written
        QTest::addColumn<QStringList>("system");  // "key=value"; a product's key has a '/'
        QTest::addColumn<QString>("expected");
        const QString documents = u"%1/home/.cache/tovicore/QVScratch"_s;
        QTest::newRow("temporary folder")
            << "$(PersonalTemp)" << QStringList{} << "%1/tmp/QVScratch";
        QTest::newRow("documents, one new level")
            << "$(PersonalDocument)/Site" << QStringList{} << "%1/home/Documents/Site/QVScratch";
        QTest::newRow("no drive letter")
            << "$(WinDrive)%1/work" << QStringList{} << "%1/work/QVScratch";
        QTest::newRow("macro in the middle")
            << "%1/x$(PersonalTemp)" << QStringList{} << "%1/x%1/tmp/QVScratch";
        QTest::newRow("parent missing") << "%1/no/such/place" << QStringList{} << documents;
        QTest::newRow("nothing set") << QString() << QStringList{} << documents;
        QTest::newRow("system value, copied to the user")
            << QString() << QStringList{"QVScratch=$(PersonalTemp)/site"}
            << "%1/tmp/site/QVScratch";
        QTest::newRow("product, two levels removed")
            << "%1/no/such/place" << QStringList{"QVPhotoViewer/1.0=%1/opt/orvane/viewer/bin/"}
            << "%1/opt/orvane/QVScratch";
        QTest::newRow("product, newest version first")
            << "%1/no/such/place"
            << QStringList{"QVPhotoViewer/1.0=%1/old/a/b", "QVPhotoViewer/2.0=%1/new/a/b"}
            << "%1/new/QVScratch";
        QTest::newRow("product, missing program folder skipped")
            << "%1/no/such/place"
            << QStringList{"QVPhotoViewer/1.0=%1/old/a/b", "QVPhotoViewer/2.0=%1/gone/a/b"}
            << "%1/old/QVScratch";
    }
    void workFolder() {
        QFETCH(QString, value);
        QFETCH(QStringList, system);
        QFETCH(QString, expected);
        if (value.contains("%1/x"_L1)) {
            QVERIFY(QDir().mkpath(Path(u"x"_s) + Path(u"tmp"_s)));
        }
        WriteText(Path(u"tmp/file"_s), "x");
        if (!value.isNull()) {
            SetUser(Fill(value));
        }
        for (const QString& entry : system) {
            const QString key = entry.section(QLatin1Char('='), 0, 0);
            const QString text = Fill(entry.section(QLatin1Char('='), 1));
            if (!key.contains(QLatin1Char('/'))) {
                SetSystem(key, text);
                continue;
            }
            QVERIFY(text.contains("/gone/"_L1) || QDir().mkpath(text));
            SetSystem(u"Software/Orvane Systems/%1/Common/Path/Program"_s.arg(key), text);
        }
        for (int call = 0; call < 2; ++call) {
            QString folder;
            QVERIFY(ToviEnvironment::GetWorkFolder(folder));
            QCOMPARE(folder, Fill(expected));
            // The location itself now exists; the work folder is the caller's to create.
            QVERIFY(QFileInfo(QFileInfo(folder).path()).isDir());
            QCOMPARE(ToviEnvironment::SuiteFolder(), folder + u"/QV-SUITE/"_s);
        }
        QVERIFY(!QFileInfo::exists(Path(u"no"_s)));
        // A system value reaches the user's file as written, so its macros follow the user.
        const QString copied = system.filter(u"QVScratch="_s).join(QString()).mid(10);
        QCOMPARE(
            QSettings(Path(u"user.ini"_s), QSettings::IniFormat).value(u"QVScratch"_s).toString(),
            value.isNull() ? copied : Fill(value));
    }
    // The suite folder handed out through a buffer: the size needed, terminator included,
    // until the buffer holds it; the sizes count UTF-8 bytes.
    void suiteFolderBuffer() {
        const QString location = Path(u"作業"_s);
        SetUser(location);
        const QByteArray expected = (location + u"/QVScratch/QV-SUITE/"_s).toUtf8();
        const int needed = static_cast<int>(expected.size()) + 1;
        std::vector<char> buffer(needed + 4, '#');
        QCOMPARE(ToviEnvironment::GetSuiteFolder(needed - 1, buffer.data()), needed);
        QCOMPARE(buffer[0], '#');
        QCOMPARE(ToviEnvironment::GetSuiteFolder(needed, buffer.data()), needed - 1);
        QCOMPARE(QByteArray(buffer.data()), expected);
    }

    // No table: unknown (0); a table that does not cover the path: no mount point (1).
    void driveTypeWithoutUsableTable() {
        ToviEnvironment::SetMountTableForTesting(Path(u"missing"_s));
        QCOMPARE(ToviGetDriveType(u"/home"_s), 0u);
        WriteText(Path(u"mounts"_s), "tmpfs /tmp tmpfs rw 0 0\nbroken line\n");
        ToviEnvironment::SetMountTableForTesting(Path(u"mounts"_s));
        QCOMPARE(ToviGetDriveType(u"/home"_s), 1u);
    }

    void driveType_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<uint>("type");

        QTest::newRow("CD") << "/media/cdrom/PHOTO/PIC/P0000001.JPG" << 5u;
        QTest::newRow("NFS") << "/mnt/nfs/a" << 4u;
        QTest::newRow("local disk mounted inside NFS") << "/mnt/nfs/local/a" << 3u;
        QTest::newRow("USB partition, escaped space") << "/media/usb stick/PHOTO.XML" << 2u;
        QTest::newRow("prefix that is not the mount point") << "/media/usb sticker/x" << 3u;
        QTest::newRow("card without partitions") << "/media/card/DCIM" << 2u;
        QTest::newRow("dot-dot cleaned") << "/media/cdrom/../usb stick/x" << 2u;
        QTest::newRow("relative") << "media/cdrom" << 0u;
    }
    void driveType() {
        QFETCH(QString, path);
        QFETCH(uint, type);

        WriteText(Path(u"mounts"_s),
                  "/dev/sda2 / ext4 rw,relatime 0 0\n"
                  "/dev/sr0 /media/cdrom iso9660 ro 0 0\n"
                  "server:/export /mnt/nfs nfs4 rw 0 0\n"
                  "/dev/sdb1 /media/usb\\040stick vfat rw 0 0\n"
                  "/dev/sdc /media/card exfat rw 0 0\n"
                  "/dev/sda4 /mnt/nfs/local ext4 rw 0 0\n");
        // The block-device folder as the kernel lays it out: partitions inside their disk.
        const QString sys = Path(u"sys"_s);
        for (const auto& [disk, removable] :
             {std::pair("sda", "0"), std::pair("sdb", "1"), std::pair("sdc", "1")}) {
            WriteText(u"%1/devices/%2/removable"_s.arg(sys, disk), removable);
            QDir().mkpath(u"%1/class"_s.arg(sys));
            QVERIFY(
                QFile::link(u"%1/devices/%2"_s.arg(sys, disk), u"%1/class/%2"_s.arg(sys, disk)));
        }
        for (const auto& [disk, part] :
             {std::pair("sda", "sda2"), std::pair("sda", "sda4"), std::pair("sdb", "sdb1")}) {
            WriteText(u"%1/devices/%2/%3/partition"_s.arg(sys, disk, part), "1");
            QVERIFY(QFile::link(u"%1/devices/%2/%3"_s.arg(sys, disk, part),
                                u"%1/class/%2"_s.arg(sys, part)));
        }
        ToviEnvironment::SetMountTableForTesting(Path(u"mounts"_s));
        ToviEnvironment::SetBlockDevicesForTesting(sys + u"/class"_s);

        QCOMPARE(ToviGetDriveType(path), type);
    }

private:
    QString Path(const QString& relative) const { return dir->filePath(relative); }
    void SetUser(const QString& value) {
        QSettings user(Path(u"user.ini"_s), QSettings::IniFormat);
        user.setValue(u"QVScratch"_s, value);
    }
    void SetSystem(const QString& key, const QString& value) {
        QSettings system(Path(u"system.ini"_s), QSettings::IniFormat);
        system.setValue(key, value);
    }
    // Puts the fixture folder where a row's text says %1.
    QString Fill(QString text) const { return text.replace("%1"_L1, dir->path()); }

    std::unique_ptr<QTemporaryDir> dir;
    QByteArray home, configHome, tmp;
};

QTEST_GUILESS_MAIN(ToviEnvironmentTest)
#include "ToviEnvironmentTest.moc"

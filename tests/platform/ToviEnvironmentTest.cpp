#include "platform/ToviEnvironment.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>
#include <vector>

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
        qputenv("HOME", QFile::encodeName(Path(QStringLiteral("home"))));
        qunsetenv("XDG_CONFIG_HOME");
        qputenv("TMPDIR", QFile::encodeName(Path(QStringLiteral("tmp"))));
        for (const char* folder : {"home/Documents", "home/Desktop", "tmp"}) {
            QVERIFY(QDir().mkpath(Path(QLatin1String(folder))));
        }
        ToviEnvironment::SetSettingsPathsForTesting(Path(QStringLiteral("user.ini")),
                                                    Path(QStringLiteral("system.ini")));
    }
    void cleanup() {
        ToviEnvironment::SetSettingsPathsForTesting(QString(), QString());
        ToviEnvironment::SetMountTableForTesting(QString());
        ToviEnvironment::SetBlockDevicesForTesting(QString());
    }
    void defaultSettingsFile() {
        // Runs first, so that QSettings settles its user folder inside the fixture.
        ToviEnvironment::SetSettingsPathsForTesting(QString(), QString());
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(Path(QStringLiteral("config"))));
        QSettings user(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Orvane Systems"),
                       QStringLiteral("QVHomeKey"));
        if (!user.fileName().startsWith(dir->path())) {
            QSKIP("QSettings chose its user folder before the fixture could move it");
        }
        user.setValue(QStringLiteral("QVScratch"), QStringLiteral("$(PersonalTemp)"));
        user.sync();

        QString folder;
        QVERIFY(ToviEnvironment::GetWorkFolder(folder));
        QCOMPARE(folder, Path(QStringLiteral("tmp/QVScratch")));
    }
    void userValue_data() {
        QTest::addColumn<QString>("value");     // %1 stands for the fixture folder
        QTest::addColumn<QString>("expected");  // the work folder, %1 as above

        QTest::newRow("temporary folder") << "$(PersonalTemp)"
                                          << "%1/tmp/QVScratch";
        QTest::newRow("documents, one new level") << "$(PersonalDocument)/Site"
                                                  << "%1/home/Documents/Site/QVScratch";
        QTest::newRow("no drive letter") << "$(WinDrive)%1/work"
                                         << "%1/work/QVScratch";
        QTest::newRow("macro in the middle") << "%1/x$(PersonalTemp)"
                                             << "%1/x%1/tmp/QVScratch";
    }
    void userValue() {
        QFETCH(QString, value);
        QFETCH(QString, expected);
        if (value.contains(QLatin1String("%1/x"))) {
            QVERIFY(QDir().mkpath(Path(QStringLiteral("x")) + Path(QStringLiteral("tmp"))));
        }
        SetUser(Fill(value));

        QString folder;
        QVERIFY(ToviEnvironment::GetWorkFolder(folder));
        QCOMPARE(folder, Fill(expected));
        // The location itself now exists; the work folder is the caller's to create.
        QVERIFY(QFileInfo(QFileInfo(folder).path()).isDir());
        QCOMPARE(ToviEnvironment::SuiteFolder(), folder + QStringLiteral("/QV-SUITE/"));
    }
    void systemValueCopiedToUser() {
        SetSystem(QStringLiteral("QVScratch"), QStringLiteral("$(PersonalTemp)/site"));

        QString folder;
        QVERIFY(ToviEnvironment::GetWorkFolder(folder));
        QCOMPARE(folder, Path(QStringLiteral("tmp/site/QVScratch")));
        // The copy keeps the macro, so that it follows the user's own folders.
        QSettings user(Path(QStringLiteral("user.ini")), QSettings::IniFormat);
        QCOMPARE(user.value(QStringLiteral("QVScratch")).toString(),
                 QStringLiteral("$(PersonalTemp)/site"));

        // The next look-up finds it in the user's file even when the system's is gone.
        QVERIFY(QFile::remove(Path(QStringLiteral("system.ini"))));
        QString again;
        QVERIFY(ToviEnvironment::GetWorkFolder(again));
        QCOMPARE(again, folder);
    }
    void unusableLocation_data() {
        QTest::addColumn<bool>("inSystem");
        QTest::addColumn<QString>("value");  // null: nothing written

        QTest::newRow("user: parent missing") << false << "%1/no/such/place";
        QTest::newRow("nothing set") << true << QString();
    }
    void unusableLocation() {
        QFETCH(bool, inSystem);
        QFETCH(QString, value);
        WriteText(Path(QStringLiteral("tmp/file")), "x");
        if (!value.isNull()) {
            if (inSystem) {
                SetSystem(QStringLiteral("QVScratch"), Fill(value));
            } else {
                SetUser(Fill(value));
            }
        }

        // No product is installed either, so the documents folder is what is left.
        for (int call = 0; call < 2; ++call) {
            QString folder;
            QVERIFY(ToviEnvironment::GetWorkFolder(folder));
            QCOMPARE(folder, Path(QStringLiteral("home/Documents/QVScratch")));
        }
        QVERIFY(!QFileInfo::exists(Path(QStringLiteral("no"))));
    }
    // The suite folder handed out through a buffer: the size needed, terminator included,
    // until the buffer holds it; the sizes count UTF-8 bytes.
    void suiteFolderBuffer() {
        const QString location = Path(QStringLiteral("作業"));
        SetUser(location);
        const QByteArray expected = (location + QStringLiteral("/QVScratch/QV-SUITE/")).toUtf8();
        const int needed = static_cast<int>(expected.size()) + 1;
        std::vector<char> buffer(needed + 4, '#');
        QCOMPARE(ToviEnvironment::GetSuiteFolder(needed - 1, buffer.data()), needed);
        QCOMPARE(buffer[0], '#');
        QCOMPARE(ToviEnvironment::GetSuiteFolder(needed, buffer.data()), needed - 1);
        QCOMPARE(QByteArray(buffer.data()), expected);
    }

    // Without a usable location the newest installed product's folder, two levels above its
    // program folder, takes the work folder.
    void productFallback_data() {
        QTest::addColumn<QStringList>("entries");  // "product/version=program folder"
        QTest::addColumn<QString>("expected");

        QTest::newRow("two levels removed")
            << QStringList{"QVPhotoViewer/1.0=%1/opt/orvane/viewer/bin/"}
            << "%1/opt/orvane/QVScratch";
        QTest::newRow("newest version first")
            << QStringList{"QVPhotoViewer/1.0=%1/old/a/b", "QVPhotoViewer/2.0=%1/new/a/b"}
            << "%1/new/QVScratch";
        QTest::newRow("missing program folder skipped")
            << QStringList{"QVPhotoViewer/1.0=%1/old/a/b", "QVPhotoViewer/2.0=%1/gone/a/b"}
            << "%1/old/QVScratch";
    }
    void productFallback() {
        QFETCH(QStringList, entries);
        QFETCH(QString, expected);
        SetUser(Path(QStringLiteral("no/such/place")));
        for (const QString& entry : entries) {
            const QString key = entry.section(QLatin1Char('='), 0, 0);
            const QString program = Fill(entry.section(QLatin1Char('='), 1));
            if (!program.contains(QLatin1String("/gone/"))) {
                QVERIFY(QDir().mkpath(program));
            }
            SetSystem(QStringLiteral("Software/Orvane Systems/%1/Common/Path/Program").arg(key),
                      program);
        }

        QString folder;
        QVERIFY(ToviEnvironment::GetWorkFolder(folder));
        QCOMPARE(folder, Fill(expected));
    }
    // No table: unknown (0); a table that does not cover the path: no mount point (1).
    void driveTypeWithoutUsableTable() {
        ToviEnvironment::SetMountTableForTesting(Path(QStringLiteral("missing")));
        QCOMPARE(ToviGetDriveType(QStringLiteral("/home")), 0u);
        WriteText(Path(QStringLiteral("mounts")), "tmpfs /tmp tmpfs rw 0 0\nbroken line\n");
        ToviEnvironment::SetMountTableForTesting(Path(QStringLiteral("mounts")));
        QCOMPARE(ToviGetDriveType(QStringLiteral("/home")), 1u);
    }

    void driveType_data() {
        QTest::addColumn<QString>("path");
        QTest::addColumn<uint>("type");

        QTest::newRow("root") << "/" << 3u;
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

        WriteText(Path(QStringLiteral("mounts")),
                  "/dev/sda2 / ext4 rw,relatime 0 0\n"
                  "tmpfs /tmp tmpfs rw 0 0\n"
                  "/dev/sr0 /media/cdrom iso9660 ro 0 0\n"
                  "/dev/sr1 /media/dvd udf ro 0 0\n"
                  "server:/export /mnt/nfs nfs4 rw 0 0\n"
                  "//nas/share /mnt/share cifs rw 0 0\n"
                  "/dev/sdb1 /media/usb\\040stick vfat rw 0 0\n"
                  "/dev/sdc /media/card exfat rw 0 0\n"
                  "/dev/sda3 /data ext4 rw 0 0\n"
                  "/dev/sda4 /mnt/nfs/local ext4 rw 0 0\n");
        // The block-device folder as the kernel lays it out: partitions inside their disk.
        const QString sys = Path(QStringLiteral("sys"));
        for (const auto& [disk, removable] :
             {std::pair("sda", "0"), std::pair("sdb", "1"), std::pair("sdc", "1")}) {
            WriteText(QStringLiteral("%1/devices/%2/removable").arg(sys, disk), removable);
            QDir().mkpath(QStringLiteral("%1/class").arg(sys));
            QVERIFY(QFile::link(QStringLiteral("%1/devices/%2").arg(sys, disk),
                                QStringLiteral("%1/class/%2").arg(sys, disk)));
        }
        for (const auto& [disk, part] : {std::pair("sda", "sda2"), std::pair("sda", "sda3"),
                                         std::pair("sda", "sda4"), std::pair("sdb", "sdb1")}) {
            WriteText(QStringLiteral("%1/devices/%2/%3/partition").arg(sys, disk, part), "1");
            QVERIFY(QFile::link(QStringLiteral("%1/devices/%2/%3").arg(sys, disk, part),
                                QStringLiteral("%1/class/%2").arg(sys, part)));
        }
        ToviEnvironment::SetMountTableForTesting(Path(QStringLiteral("mounts")));
        ToviEnvironment::SetBlockDevicesForTesting(sys + QStringLiteral("/class"));

        QCOMPARE(ToviGetDriveType(path), type);
    }

private:
    QString Path(const QString& relative) const { return dir->filePath(relative); }
    void SetUser(const QString& value) {
        QSettings user(Path(QStringLiteral("user.ini")), QSettings::IniFormat);
        user.setValue(QStringLiteral("QVScratch"), value);
    }
    void SetSystem(const QString& key, const QString& value) {
        QSettings system(Path(QStringLiteral("system.ini")), QSettings::IniFormat);
        system.setValue(key, value);
    }
    // Puts the fixture folder where a row's text says %1.
    QString Fill(QString text) const { return text.replace(QLatin1String("%1"), dir->path()); }

    std::unique_ptr<QTemporaryDir> dir;
    QByteArray home, configHome, tmp;
};

QTEST_GUILESS_MAIN(ToviEnvironmentTest)
#include "ToviEnvironmentTest.moc"

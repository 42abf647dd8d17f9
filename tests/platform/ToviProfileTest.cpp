#include "platform/ToviProfile.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

class ToviProfileTest : public QObject {
    Q_OBJECT

    ToviProfile& Profile() { return ToviProfile::Instance(); }

private slots:
    void cleanupTestCase() {
        // Leave the store on a folder that is gone, as every test program does at exit.
        QVERIFY(!QFileInfo::exists(gone));
    }

    void valuesReachTheFileOnFlushAndReadBack() {
        QTemporaryDir temp;
        const QString path = temp.filePath(QStringLiteral("sub/p.ini"));
        Profile().UseFile(path);
        QVERIFY(QFileInfo(temp.filePath(QStringLiteral("sub"))).isDir());
        QVERIFY(Profile().WriteProfileInt(QStringLiteral("Sort"), QStringLiteral("Key"), 105));
        QVERIFY(Profile().WriteProfileString(QStringLiteral("Label"), QStringLiteral("Name0"),
                                             QStringLiteral("確認済, 要再提出")));
        QVERIFY(!QFile::exists(path));
        Profile().Flush();
        QCOMPARE(QSettings(path, QSettings::IniFormat).value(QStringLiteral("Sort/Key")).toInt(),
                 105);

        Profile().UseFile(QString());
        Profile().UseFile(path);
        QCOMPARE(Profile().GetProfileInt(QStringLiteral("Sort"), QStringLiteral("Key"), 0), 105);
        QCOMPARE(Profile().GetProfileString(QStringLiteral("Label"), QStringLiteral("Name0"), {}),
                 QStringLiteral("確認済, 要再提出"));
        QCOMPARE(Profile().GetProfileInt(QStringLiteral("Label"), QStringLiteral("Name0"), 7), 7);
        Profile().WriteProfileInt(QStringLiteral("Sort"), QStringLiteral("Key"), 1);
        gone = temp.path();
    }

    void aRemovedFolderIsNotMadeAgain() {
        QVERIFY(Profile().WriteProfileInt(QStringLiteral("Sort"), QStringLiteral("Key"), 2));
        Profile().Flush();
        QVERIFY(!QFileInfo::exists(gone));
        Profile().UseFile(QString());
        QVERIFY(!QFileInfo::exists(gone));
    }

private:
    QString gone;
};

QTEST_GUILESS_MAIN(ToviProfileTest)
#include "ToviProfileTest.moc"

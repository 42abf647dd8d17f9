#include "platform/ToviProfile.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

using namespace Qt::StringLiterals;

class ToviProfileTest : public QObject {
    Q_OBJECT

    ToviProfile& Profile() { return ToviProfile::Instance(); }

private slots:
    // Values reach the file on Flush and read back after a switch of file; a folder removed
    // under the store is not made again, also when the store leaves it (as every test program
    // does at exit).
    void valuesReachTheFileAndReadBack() {
        QString gone;
        {
            QTemporaryDir temp;
            const QString path = temp.filePath(u"sub/p.ini"_s);
            Profile().UseFile(path);
            QVERIFY(QFileInfo(temp.filePath(u"sub"_s)).isDir());
            QVERIFY(Profile().WriteProfileInt(u"Sort"_s, u"Key"_s, 105));
            QVERIFY(Profile().WriteProfileString(u"Label"_s, u"Name0"_s, u"確認済, 要再提出"_s));
            QVERIFY(!QFile::exists(path));
            Profile().Flush();
            QCOMPARE(QSettings(path, QSettings::IniFormat).value(u"Sort/Key"_s).toInt(), 105);

            Profile().UseFile(QString());
            Profile().UseFile(path);
            QCOMPARE(Profile().GetProfileInt(u"Sort"_s, u"Key"_s, 0), 105);
            QCOMPARE(Profile().GetProfileString(u"Label"_s, u"Name0"_s, {}), u"確認済, 要再提出"_s);
            QCOMPARE(Profile().GetProfileInt(u"Label"_s, u"Name0"_s, 7), 7);
            Profile().WriteProfileInt(u"Sort"_s, u"Key"_s, 1);
            gone = temp.path();
        }
        QVERIFY(Profile().WriteProfileInt(u"Sort"_s, u"Key"_s, 2));
        Profile().Flush();
        QVERIFY(!QFileInfo::exists(gone));
        Profile().UseFile(QString());
        QVERIFY(!QFileInfo::exists(gone));
    }
};

QTEST_GUILESS_MAIN(ToviProfileTest)
#include "ToviProfileTest.moc"

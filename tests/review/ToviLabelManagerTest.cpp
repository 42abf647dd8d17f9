#include "platform/ToviProfile.h"
#include "review/ToviLabelManager.h"

#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include <initializer_list>
#include <stdexcept>
#include <utility>

namespace {

// Marks a slot whose entry is not written at all.
const QString kAbsent = QStringLiteral("<absent>");

QString Entry(int slot) {
    return QStringLiteral("Label%1").arg(slot + 1);
}

QStringList DefaultNames() {
    return {QStringLiteral("OK"),     QStringLiteral("追記"),     QStringLiteral("誤記"),
            QStringLiteral("不鮮明"), QStringLiteral("コメント"), QStringLiteral("印刷")};
}

// The built-in names with some slots replaced.
QStringList DefaultsWith(std::initializer_list<std::pair<int, QString>> names) {
    QStringList result = DefaultNames();
    for (const auto& [slot, name] : names) {
        result[slot] = name;
    }
    return result;
}

QStringList Names(const ToviLabelManager& manager) {
    QStringList names;
    for (int i = 0; i < ToviLabelManager::GetMaxCount(); ++i) {
        names << manager.GetLabelAttribute(i).GetName();
    }
    return names;
}

QList<quint32> Colors(const ToviLabelManager& manager) {
    QList<quint32> colors;
    for (int i = 0; i < ToviLabelManager::GetMaxCount(); ++i) {
        colors << manager.GetLabelAttribute(i).GetColorValue();
    }
    return colors;
}

const QList<quint32> kDefaultColors = {0x0000FF, 0xFF0000, 0x00FFFF, 0x00FF00, 0xFF00FF, 0xFFFF00};

}  // namespace

class ToviLabelManagerTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        QVERIFY(temp.isValid());
        profilePath = temp.filePath(QStringLiteral("p%1.ini").arg(++profileNumber));
        ToviProfile::Instance().UseFile(profilePath);
    }
    void cleanupTestCase() {
        // Leaves the store on a file with nothing pending, inside the folder that goes.
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("last.ini")));
    }

    // Colours are kept as 0x00BBGGRR (red in the low byte) and handed out as QColor; a slot
    // nobody configured is grey "_未定義_".
    void colorsAndUnsetSlot() {
        ToviLabelManager manager;
        QCOMPARE(manager.GetLabelAttribute(0).GetColor(), QColor(255, 0, 0));
        QCOMPARE(manager.GetLabelAttribute(2).GetColor(), QColor(255, 255, 0));
        const ToviLabelAttribute unset;
        QCOMPARE(unset.GetName(), QStringLiteral("_未定義_"));
        QCOMPARE(unset.GetColor(), QColor(128, 128, 128));
        ToviLabelAttribute changed;
        changed.SetColor(QColor(0x12, 0x34, 0x56));
        QCOMPARE(changed.GetColorValue(), quint32(0x563412));
        changed.SetColor(QColor());
        QCOMPARE(changed.GetColorValue(), quint32(0));
    }

    // Only a stored name that is neither empty nor "_未定義_" replaces the slot's name; the
    // stored list may be shorter than six, the rest are not written.
    void loadTakesOnlyUsableNames_data() {
        QTest::addColumn<QStringList>("stored");
        QTest::addColumn<QStringList>("expected");
        const QStringList defaults = DefaultNames();
        QTest::newRow("no section") << QStringList() << defaults;
        QTest::newRow("mixed") << QStringList{QStringLiteral("良"),       QString(),
                                              QStringLiteral("_未定義_"), kAbsent,
                                              QStringLiteral("備考"),     QStringLiteral("再撮影")}
                               << DefaultsWith({{0, QStringLiteral("良")},
                                                {4, QStringLiteral("備考")},
                                                {5, QStringLiteral("再撮影")}});
        QTest::newRow("marker is matched whole")
            << QStringList{QStringLiteral("_未定義_ "), QStringLiteral("未定義")}
            << DefaultsWith({{0, QStringLiteral("_未定義_ ")}, {1, QStringLiteral("未定義")}});
    }
    void loadTakesOnlyUsableNames() {
        QFETCH(QStringList, stored);
        QFETCH(QStringList, expected);
        ToviProfile& profile = ToviProfile::Instance();
        for (int i = 0; i < stored.size(); ++i) {
            if (stored[i] != kAbsent) {
                QVERIFY(profile.WriteProfileString(QStringLiteral("Label"), Entry(i), stored[i]));
            }
        }
        ToviLabelManager manager;
        // Loading names never touches colours, not even ones a host changed.
        manager.GetLabelAttribute(2).SetColorValue(0x123456);
        QList<quint32> colors = kDefaultColors;
        colors[2] = 0x123456;
        manager.Load();
        QCOMPARE(Names(manager), expected);
        QCOMPARE(Colors(manager), colors);
    }

    // A manager writes its six names, and nothing else, when it goes; the next one reads them.
    void savedOnDestruction_data() {
        QTest::addColumn<QString>("name");
        QTest::newRow("ini punctuation") << QStringLiteral("a,b;c=d \"e\" [f]");
        QTest::newRow("backslash and percent") << QStringLiteral("C:\\写真\\%1 100%");
    }
    void savedOnDestruction() {
        QFETCH(QString, name);
        {
            ToviLabelManager manager;
            manager.GetLabelAttribute(3).SetName(name);
            manager.GetLabelAttribute(3).SetColorValue(0x010203);
        }
        // Reopening writes the store out, so the file itself can be read back.
        ToviProfile::Instance().UseFile(profilePath);
        QSettings file(profilePath, QSettings::IniFormat);
        file.beginGroup(QStringLiteral("Label"));
        QCOMPARE(file.childKeys().size(), 6);
        file.endGroup();
        QCOMPARE(file.childGroups(), QStringList{QStringLiteral("Label")});

        ToviLabelManager next;
        next.Load();
        QCOMPARE(Names(next), DefaultsWith({{3, name}}));
        QCOMPARE(Colors(next), kDefaultColors);
    }

    // Each manager writes when it goes, so the last one to go decides what is stored: a copy
    // dropped after Cancel leaves the names as they were.
    void lastManagerToGoWins() {
        auto document = std::make_unique<ToviLabelManager>();
        {
            ToviLabelManager edited(*document);
            edited.GetLabelAttribute(1).SetName(QStringLiteral("編集後"));
            QCOMPARE(document->GetLabelAttribute(1).GetName(), QStringLiteral("追記"));
        }
        QCOMPARE(ToviProfile::Instance().GetProfileString(QStringLiteral("Label"), Entry(1), {}),
                 QStringLiteral("編集後"));
        document.reset();
        QCOMPARE(ToviProfile::Instance().GetProfileString(QStringLiteral("Label"), Entry(1), {}),
                 QStringLiteral("追記"));
    }

    // Copies are deep, however they are made: editing one never shows in the other.
    void copiesAreIndependent() {
        ToviLabelManager source;
        source.GetLabelAttribute(5).SetName(QStringLiteral("提出用"));
        source.GetLabelAttribute(5).SetColor(QColor(1, 2, 3));
        ToviLabelManager copied(source);
        ToviLabelManager fromArray(source.GetLabelAttribute());
        ToviLabelManager assigned;
        assigned = source;
        ToviLabelManager set;
        set.SetLabelAttribute(source.GetLabelAttribute());
        for (ToviLabelManager* copy : {&copied, &fromArray, &assigned, &set}) {
            QCOMPARE(Names(*copy), Names(source));
            QCOMPARE(Colors(*copy), Colors(source));
            copy->GetLabelAttribute(5).SetName(QStringLiteral("変更"));
            copy->GetLabelAttribute(0).SetColorValue(0);
            QCOMPARE(source.GetLabelAttribute(5).GetName(), QStringLiteral("提出用"));
            QCOMPARE(source.GetLabelAttribute(0).GetColorValue(), kDefaultColors[0]);
        }
        source = std::as_const(source);
        QCOMPARE(source.GetLabelAttribute(5).GetName(), QStringLiteral("提出用"));
        copied.Initialize();
        QCOMPARE(Names(copied), DefaultNames());
        QCOMPARE(Colors(copied), kDefaultColors);
    }

    void slotOutsideTheSixThrows() {
        ToviLabelManager manager;
        QVERIFY_THROWS_EXCEPTION(std::out_of_range, manager.GetLabelAttribute(6));
        const ToviLabelManager& constant = manager;
        QVERIFY_THROWS_EXCEPTION(std::out_of_range, constant.GetLabelAttribute(-1));
        // A null array leaves the vocabulary as it was.
        manager.SetLabelAttribute(nullptr);
        QCOMPARE(Names(manager), DefaultNames());
        QCOMPARE(Names(ToviLabelManager(nullptr)), DefaultNames());
    }

private:
    QTemporaryDir temp;
    QString profilePath;
    int profileNumber = 0;
};

QTEST_GUILESS_MAIN(ToviLabelManagerTest)
#include "ToviLabelManagerTest.moc"

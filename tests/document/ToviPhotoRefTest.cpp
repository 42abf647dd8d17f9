#include "document/ToviPhotoRef.h"

#include <QtTest>

namespace {

class ProbeRef : public ToviPhotoRef {
public:
    using ToviPhotoRef::Find;
};

ProbeRef Filled(const QList<int>& indexes) {
    ProbeRef ref;
    for (int index : indexes) {
        ref.Add(index);
    }
    return ref;
}

}  // namespace

class ToviPhotoRefTest : public QObject {
    Q_OBJECT

private slots:
    // An index already present answers its position and isn't added again.
    void addActsAsAnOrderedSet() {
        ProbeRef ref;
        QList<int> positions;
        for (int index : {5, 3, 5, 3, 0, -1, 0}) {
            positions.append(ref.Add(index));
        }
        QCOMPARE(positions, (QList<int>{0, 1, 0, 1, 2, 3, 2}));
        QCOMPARE(ref.Indexes(), (QList<int>{5, 3, 0, -1}));
        QCOMPARE(ref.Find(-1), 3);
        QCOMPARE(ref.Find(1000), -1);
    }

    // The answer is the position of other's first index, wherever Add put it.
    void append_data() {
        QTest::addColumn<QList<int>>("target");
        QTest::addColumn<QList<int>>("other");
        QTest::addColumn<int>("first");
        QTest::addColumn<QList<int>>("contents");
        QTest::newRow("other empty") << QList<int>{1, 2} << QList<int>{} << -1 << QList<int>{1, 2};
        QTest::newRow("all new") << QList<int>{1, 2} << QList<int>{7, 8} << 2
                                 << QList<int>{1, 2, 7, 8};
        QTest::newRow("first already there")
            << QList<int>{1, 2} << QList<int>{2, 9} << 1 << QList<int>{1, 2, 9};
        QTest::newRow("into empty") << QList<int>{} << QList<int>{4, 4, 3} << 0 << QList<int>{4, 3};
    }
    void append() {
        QFETCH(QList<int>, target);
        QFETCH(QList<int>, other);
        ProbeRef ref = Filled(target);
        QTEST(ref.Append(Filled(other)), "first");
        QTEST(ref.Indexes(), "contents");
    }

    // Assign keeps what it is given, duplicates included; look-ups then see the first position.
    void assignWithDuplicatesFindsTheFirstPosition() {
        ProbeRef ref = Filled({1, 2, 3});
        ref.Assign({4, 7, 4, 9, 7});
        QCOMPARE(ref.GetSize(), 5);
        QCOMPARE(ref.Find(1), -1);
        QCOMPARE(ref.Find(7), 1);
        QCOMPARE(ref.Add(9), 3);
        QCOMPARE(ref.Add(2), 5);
        QCOMPARE(ref.Add(4), 0);

        ref.RemoveAll();
        QVERIFY(ref.IsEmpty());
        QCOMPARE(ref.Find(4), -1);
        QCOMPARE(ref.Add(7), 0);
    }
};

QTEST_GUILESS_MAIN(ToviPhotoRefTest)
#include "ToviPhotoRefTest.moc"

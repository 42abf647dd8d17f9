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
    void addActsAsAnOrderedSet_data() {
        QTest::addColumn<QList<int>>("added");
        QTest::addColumn<QList<int>>("positions");
        QTest::addColumn<QList<int>>("contents");
        QTest::newRow("distinct") << QList<int>{5, 3, 9} << QList<int>{0, 1, 2}
                                  << QList<int>{5, 3, 9};
        QTest::newRow("same twice") << QList<int>{5, 5} << QList<int>{0, 0} << QList<int>{5};
        QTest::newRow("repeats later")
            << QList<int>{5, 3, 5, 3, 7} << QList<int>{0, 1, 0, 1, 2} << QList<int>{5, 3, 7};
        QTest::newRow("zero and negative")
            << QList<int>{0, -1, 0} << QList<int>{0, 1, 0} << QList<int>{0, -1};
    }
    void addActsAsAnOrderedSet() {
        QFETCH(QList<int>, added);
        QFETCH(QList<int>, positions);
        QFETCH(QList<int>, contents);
        ProbeRef ref;
        for (qsizetype i = 0; i < added.size(); ++i) {
            QCOMPARE(ref.Add(added[i]), positions[i]);
        }
        QCOMPARE(ref.Indexes(), contents);
        for (qsizetype i = 0; i < contents.size(); ++i) {
            QCOMPARE(ref.Find(contents[i]), static_cast<int>(i));
        }
        QCOMPARE(ref.Find(1000), -1);
    }

    // The answer is the position of other's first index, wherever Add put it.
    void append_data() {
        QTest::addColumn<QList<int>>("target");
        QTest::addColumn<QList<int>>("other");
        QTest::addColumn<int>("first");
        QTest::addColumn<QList<int>>("contents");
        QTest::newRow("other empty") << QList<int>{1, 2} << QList<int>{} << -1 << QList<int>{1, 2};
        QTest::newRow("both empty") << QList<int>{} << QList<int>{} << -1 << QList<int>{};
        QTest::newRow("all new") << QList<int>{1, 2} << QList<int>{7, 8} << 2
                                 << QList<int>{1, 2, 7, 8};
        QTest::newRow("first already there")
            << QList<int>{1, 2} << QList<int>{2, 9} << 1 << QList<int>{1, 2, 9};
        QTest::newRow("into empty") << QList<int>{} << QList<int>{4, 4, 3} << 0 << QList<int>{4, 3};
    }
    void append() {
        QFETCH(QList<int>, target);
        QFETCH(QList<int>, other);
        QFETCH(int, first);
        QFETCH(QList<int>, contents);
        ProbeRef ref = Filled(target);
        QCOMPARE(ref.Append(Filled(other)), first);
        QCOMPARE(ref.Indexes(), contents);
    }

    // Assign keeps what it is given, duplicates included; look-ups then see the first position.
    void assignWithDuplicatesFindsTheFirstPosition() {
        ProbeRef ref = Filled({1, 2, 3});
        ref.Assign({4, 7, 4, 9, 7});
        QCOMPARE(ref.GetSize(), 5);
        QCOMPARE(ref.Find(1), -1);
        QCOMPARE(ref.Find(4), 0);
        QCOMPARE(ref.Find(7), 1);
        QCOMPARE(ref.Add(9), 3);
        QCOMPARE(ref.Add(2), 5);
        QCOMPARE(ref.Add(4), 0);
        QCOMPARE(ref.Find(2), 5);
        QCOMPARE(ref.GetSize(), 6);

        ref.RemoveAll();
        QVERIFY(ref.IsEmpty());
        QCOMPARE(ref.Find(4), -1);
        QCOMPARE(ref.Add(7), 0);
    }
};

QTEST_GUILESS_MAIN(ToviPhotoRefTest)
#include "ToviPhotoRefTest.moc"

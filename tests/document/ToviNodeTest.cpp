#include "document/ToviNode.h"

#include <QtTest>

#include <stdexcept>

namespace {

// Counts destructions, so that the tests can tell deleted children from dropped ones.
class CountedNode : public ToviNode {
public:
    explicit CountedNode(const QString& title, int* deaths) : ToviNode(title), deaths(deaths) {}
    ~CountedNode() override { ++*deaths; }

private:
    int* deaths;
};

QStringList ChildTitles(ToviNode& node) {
    QStringList titles;
    for (ToviNode* child : node.Items()) {
        titles.append(child->Title());
    }
    return titles;
}

ToviNode* AddChild(ToviNode& parent, const QString& title, const QList<int>& indexes = {}) {
    ToviNode* child = parent.GetNode(parent.Add(std::make_unique<ToviNode>(title)));
    for (int index : indexes) {
        child->AddIndex(index);
    }
    return child;
}

// R [0] { A [1 2] { B [3] { D [4] } }, C [5] }, with only A valid.
void BuildSample(ToviNode& root) {
    root.Title(QStringLiteral("R"));
    root.AddIndex(0);
    ToviNode* a = AddChild(root, QStringLiteral("A"), {1, 2});
    AddChild(*AddChild(*a, QStringLiteral("B"), {3}), QStringLiteral("D"), {4});
    AddChild(root, QStringLiteral("C"), {5});
    a->Valid(true);
}

}  // namespace

class ToviNodeTest : public QObject {
    Q_OBJECT

private slots:
    // Children keep the order of first appearance, and the missing-value node stays last.
    void addKeepsTheUnfilledNodeLast_data() {
        QTest::addColumn<QStringList>("added");
        QTest::addColumn<QList<int>>("positions");
        QTest::addColumn<QStringList>("order");
        const QString u = ToviNode::kUnfilledTitle;
        QTest::newRow("unfilled first")
            << QStringList{u, "A", "B"} << QList<int>{0, 0, 1} << QStringList{"A", "B", u};
        QTest::newRow("unfilled between")
            << QStringList{"A", u, "B"} << QList<int>{0, 1, 1} << QStringList{"A", "B", u};
        QTest::newRow("a second unfilled goes before the first")
            << QStringList{"A", u, u} << QList<int>{0, 1, 1} << QStringList{"A", u, u};
    }
    void addKeepsTheUnfilledNodeLast() {
        QFETCH(QStringList, added);
        QFETCH(QList<int>, positions);
        ToviNode root;
        for (qsizetype i = 0; i < added.size(); ++i) {
            auto made = std::make_unique<ToviNode>(added[i]);
            ToviNode* child = made.get();
            QCOMPARE(root.Add(std::move(made)), positions[i]);
            QCOMPARE(child->Parent(), &root);
            QCOMPARE(root.GetNode(positions[i]), child);
        }
        QTEST(ChildTitles(root), "order");
    }

    // A copy carries titles and valid flags to any depth, wired to its own nodes, and no
    // photo indexes; assignment first deletes the target's children.
    void copyCarriesTheShapeWithoutIndexes() {
        ToviNode parent(QStringLiteral("P"));
        ToviNode* source = parent.GetNode(parent.Add(std::make_unique<ToviNode>()));
        BuildSample(*source);
        std::unique_ptr<ToviNode> clone = source->Clone();
        QCOMPARE(clone->Parent(), nullptr);
        QCOMPARE(ChildTitles(*clone), (QStringList{"A", "C"}));
        ToviNode* a = clone->GetNode(0);
        QVERIFY(a != source->GetNode(0) && a->IsValid() && !clone->GetNode(1)->IsValid());
        QCOMPARE(a->Parent(), clone.get());
        QCOMPARE(a->GetNode(0)->GetNode(0)->Parent(), a->GetNode(0));
        QCOMPARE(clone->DescendantCount(), 4ul);
        QList<int> all;
        QVERIFY(!clone->GetAllUnder(all));

        int deaths = 0;
        ToviNode target(QStringLiteral("T"));
        target.Add(std::make_unique<CountedNode>(QStringLiteral("X"), &deaths));
        target.Add(std::make_unique<CountedNode>(QStringLiteral("Y"), &deaths));
        target = *source;
        QCOMPARE(deaths, 2);
        QCOMPARE(target.Title(), QStringLiteral("R"));
        QCOMPARE(ChildTitles(target), (QStringList{"A", "C"}));
        QCOMPARE(target.GetNode(1)->Parent(), &target);
        source->GetNode(0)->Title(QStringLiteral("changed"));
        QCOMPARE(target.GetNode(0)->Title(), QStringLiteral("A"));
        QCOMPARE(source->Parent(), &parent);
        ToviNode& alias = target;
        target = alias;
        QCOMPARE(target.DescendantCount(), 4ul);
    }

    // Depth first, a node's own indexes before its children's; out is appended to. Counts and
    // membership are the node's own.
    void getAllUnderRunsDepthFirst() {
        ToviNode root;
        BuildSample(root);
        QList<int> out{99};
        QVERIFY(root.GetAllUnder(out));
        QCOMPARE(out, (QList<int>{99, 0, 1, 2, 3, 4, 5}));
        QCOMPARE(root.GetNode(0)->GetImageCount(), 2);
        QVERIFY(!root.GetNode(0)->HasData(3));
        QVERIFY(root.GetNode(0)->GetNode(0)->HasData(3));

        ToviNode empty(QStringLiteral("E"));
        AddChild(empty, QStringLiteral("F"));
        QList<int> none;
        QVERIFY(!empty.GetAllUnder(none));
        QList<int> prefilled{8};
        QVERIFY(empty.GetAllUnder(prefilled));
        // From the root down, each non-empty title followed by the separator.
        ToviNode* d = root.GetNode(0)->GetNode(0)->GetNode(0);
        root.GetNode(0)->GetNode(0)->Title(QString());
        QCOMPARE(d->GetFullTitlePath(QStringLiteral(" > ")), QStringLiteral("R > A > D > "));
    }
};

QTEST_GUILESS_MAIN(ToviNodeTest)
#include "ToviNodeTest.moc"

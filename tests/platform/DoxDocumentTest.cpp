#include "platform/Cp932.h"
#include "platform/DoxDocument.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Every element in document order as "depth tag=text", walked with Next from the root.
QStringList Walk(DoxDocument& xml) {
    QStringList seen;
    DoxIterator it(&xml);
    if (!it.Root()) {
        return seen;
    }
    do {
        seen.append(QStringLiteral("%1 %2=%3").arg(it.Depth()).arg(it.GetTagName(), it.GetText()));
    } while (it.Next());
    return seen;
}

QString WriteDoc(const QTemporaryDir& temp, const QByteArray& bytes) {
    const QString path = temp.filePath(QStringLiteral("doc.xml"));
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? path : QString();
}

}  // namespace

class DoxDocumentTest : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { DoxDocument::SetSliceSizeForTesting(0); }

    // A streamed load walks the same elements and texts as a whole one, at any slice size.
    void streamedWalkMatchesWholeLoad_data() {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QByteArray>("encoding");
        const QByteArray children =
            "<!-- <a>not an element</a> --><写真 n=\"1>2\" m='x\"y'><題>一</題><日>2024</日></写真>"
            "<?pi <b>?>\n<写真><題><![CDATA[<c>]]>二</題><写真><題>入れ子</題></写真></写真>"
            "text<空/><空 a=\">\"/><写真><題>三&amp;四</題></写真>";
        QTest::newRow("Shift_JIS")
            << "<!DOCTYPE r [<!ENTITY e \"]>\">]>\n<r a=\"1\">" + children + "</r><!-- after -->"
            << QByteArray("Shift_JIS");
        QTest::newRow("UTF-8") << "<r>" + children + "</r>" << QByteArray("UTF-8");
        QTest::newRow("empty root") << QByteArray("<r/>") << QByteArray("Shift_JIS");
        QTest::newRow("no children") << QByteArray("<r> </r>") << QByteArray("UTF-8");
    }
    void streamedWalkMatchesWholeLoad() {
        QFETCH(QByteArray, body);
        QFETCH(QByteArray, encoding);
        QTemporaryDir temp;
        const QByteArray text = "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n" + body;
        const QString path = WriteDoc(
            temp, encoding == "UTF-8" ? text : Cp932::FromUnicode(QString::fromUtf8(text)));

        DoxDocument whole;
        whole.Initiate();
        QVERIFY(whole.Load(path));
        const QStringList expected = Walk(whole);
        for (const qsizetype slice : {1, 40, 0}) {
            DoxDocument::SetSliceSizeForTesting(slice);
            DoxDocument streamed;
            streamed.Initiate();
            QVERIFY(streamed.LoadStreamed(path));
            QCOMPARE(Walk(streamed), expected);
            QVERIFY(streamed.FinishStream());
        }
    }

    // Broken XML fails the streamed load with one line: at once without a root element,
    // else at once or in FinishStream.
    void brokenStreams_data() {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<bool>("opens");
        QTest::newRow("root never closed") << QByteArray("<r><a>1</a><a>2</a>") << true;
        QTest::newRow("wrong root end") << QByteArray("<r><a>1</a></s>") << true;
        QTest::newRow("broken in a later child")
            << QByteArray("<r><a>1</a><a>2</a><a><b>3</a></b></r>") << true;
        QTest::newRow("cut inside a tag") << QByteArray("<r><a>1</a><a x=\"") << true;
        QTest::newRow("end tag first") << QByteArray("</r>") << false;
        QTest::newRow("no element") << QByteArray("<!-- only -->") << false;
    }
    void brokenStreams() {
        QFETCH(QByteArray, body);
        QFETCH(bool, opens);
        QTemporaryDir temp;
        const QString path = WriteDoc(temp, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + body);
        DoxDocument::SetSliceSizeForTesting(1);
        DoxDocument xml;
        xml.Initiate();
        QStringList errors;
        const bool opened = xml.LoadStreamed(path, &errors);
        QVERIFY(opened || errors.size() == 1);
        QVERIFY(opens || !opened);
        if (opened) {
            Walk(xml);
            QVERIFY(!xml.FinishStream(&errors));
        }
        QCOMPARE(errors.size(), 1);
        QVERIFY2(errors.first().contains(QStringLiteral("XML")), qPrintable(errors.first()));
    }
};

QTEST_GUILESS_MAIN(DoxDocumentTest)
#include "DoxDocumentTest.moc"

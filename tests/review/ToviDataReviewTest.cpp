#include "document/ToviData.h"
#include "document/ToviHostDocument.h"
#include "document/ToviPhoto.h"
#include "extraction/ToviExtractionConditions.h"
#include "extraction/ToviSortCondition.h"
#include "extraction/ToviSorter.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/Cp932.h"
#include "platform/MibFile.h"
#include "platform/ToviProfile.h"
#include "platform/ToviUi.h"
#include "review/ToviXmlManager.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ExifJpegWriter.h"
#include "tests/support/ProgramRun.h"
#include "tests/support/ScriptedUi.h"

#include <QDateTime>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <stdexcept>

namespace {

// QList<int>'s operator== hands memcmp a null pointer for two empty lists, which the
// sanitizer build rejects: lists of ints are compared as text.
QString Ints(const QList<int>& list) {
    QStringList texts;
    for (int value : list) {
        texts.append(QString::number(value));
    }
    return texts.join(QLatin1Char(','));
}
#define QTEST_INTS(actual, column) \
    QCOMPARE(Ints(actual), \
             Ints(*static_cast<QList<int>*>(QTest::qData(column, qMetaTypeId<QList<int>>()))))


// Records every hint the document broadcasts.
class RecordingHost : public ToviHostDocument {
public:
    void UpdateAllViews(QWidget*, int hint, QObject*) override { hints.append(hint); }
    QList<int> hints;
};

QString ImageName(int k) {
    return QString::asprintf("P%07d.JPG", k + 1);
}

QByteArray ReadAll(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool WriteAll(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// Writes a 国交省-20 folder/PHOTO.XML, one photograph per entry "工種=A;種別=;..." ("種別="
// writes an empty element). Required elements not named get a plain value, optional ones none.
bool WritePhotoXml(const QString& folder, const QStringList& photos) {
    QString xml = QStringLiteral(
        "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n"
        "<!DOCTYPE photodata SYSTEM \"PHOTO05.DTD\">\n"
        "<photodata DTD_version=\"05\">\n"
        "<基礎情報><写真フォルダ名>PHOTO/PIC</写真フォルダ名>"
        "<適用要領基準>土木202303-01</適用要領基準></基礎情報>\n");
    for (int k = 0; k < photos.size(); ++k) {
        const QStringList given = photos[k].split(QLatin1Char(';'), Qt::SkipEmptyParts);
        // Every value given for tag, else the fallback unless that is null.
        auto leaf = [&given](const char* tag, const QString& fallback = QString()) {
            const QString name = QString::fromUtf8(tag);
            QString out;
            for (const QString& part : given) {
                if (part.section(QLatin1Char('='), 0, 0) == name) {
                    out += QStringLiteral("<%1>%2</%1>")
                               .arg(name, part.section('=', 1).toHtmlEscaped());
                }
            }
            return out.isEmpty() && !fallback.isNull()
                       ? QStringLiteral("<%1>%2</%1>").arg(name, fallback)
                       : out;
        };
        xml += QStringLiteral("<写真情報><写真ファイル情報>") +
               leaf("シリアル番号", QString::number(k + 1)) + leaf("写真ファイル名", ImageName(k)) +
               leaf("メディア番号", QStringLiteral("1")) +
               QStringLiteral("</写真ファイル情報><撮影工種区分>") +
               leaf("写真-大分類", QStringLiteral("工事")) + leaf("写真区分") + leaf("工種") +
               leaf("種別") + leaf("細別") +
               leaf("写真タイトル", QStringLiteral("写真%1").arg(k + 1)) + leaf("工種区分予備") +
               QStringLiteral("</撮影工種区分>");
        if (!(leaf("参考図ファイル名") + leaf("参考図タイトル") + leaf("付加情報予備")).isEmpty()) {
            xml += QStringLiteral("<付加情報>") +
                   leaf("参考図ファイル名", QString::asprintf("D%07d.JPG", k + 1)) +
                   leaf("参考図タイトル", QStringLiteral("参考図")) + leaf("付加情報予備") +
                   QStringLiteral("</付加情報>");
        }
        xml += QStringLiteral("<撮影情報>") + leaf("撮影箇所") +
               leaf("撮影年月日", QStringLiteral("2024-04-01")) + QStringLiteral("</撮影情報>") +
               leaf("代表写真", QStringLiteral("0")) + leaf("提出頻度写真", QStringLiteral("0")) +
               QStringLiteral("</写真情報>\n");
    }
    QDir().mkpath(folder + QStringLiteral("/PIC"));
    bool ok = false;
    const QByteArray bytes = Cp932::FromUnicode(xml + QStringLiteral("</photodata>\n"), &ok);
    return ok && WriteAll(folder + QStringLiteral("/PHOTO.XML"), bytes);
}

// The delivery in folder as family 0, read through the real reader; null on any error.
std::unique_ptr<ToviData> Load(ToviHostDocument* host, const QString& folder) {
    std::unique_ptr<ToviData> document(ToviEnouDataFactory().Create(host, folder, PhotoXMLMlit));
    return document && document->GetErrorType() == ReadErrNone ? std::move(document) : nullptr;
}

// The tree below node as "{own photo indexes}[child title..., ...]".
QString Dump(const ToviNode& node) {
    QStringList numbers;
    QStringList children;
    for (int index : node.Indexes()) {
        numbers.append(QString::number(index));
    }
    for (const ToviNode* child : node.Items()) {
        children.append(child->Title() + Dump(*child));
    }
    return (numbers.isEmpty() ? QString() : QLatin1Char('{') + numbers.join(',') + '}') +
           (children.isEmpty() ? QString() : QLatin1Char('[') + children.join(',') + ']');
}

// The node reached from node by titles "A/B/C", null when there is none; "" is node itself.
ToviNode* NodeAt(ToviNode* node, const QString& path) {
    for (const QString& title : path.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        ToviNode* parent = node;
        node = nullptr;
        for (ToviNode* child : parent->Items()) {
            node = child->Title() == title ? child : node;
        }
        if (!node) {
            return nullptr;
        }
    }
    return node;
}

// A photograph's labels as the digits of the pasted slots, then "c" when it has a comment.
QString Labels(const ToviPhoto& photo) {
    QString text;
    for (int label = 0; label < ToviPhoto::kLabelCount; ++label) {
        text += photo.IsLabelPasted(label) ? QString::number(label) : QString();
    }
    return photo.GetComment().isEmpty() ? text : text + QLatin1Char('c');
}

// Steps on photo: a digit pastes that label, "-" and a digit removes it, c comments, x removes
// all, k marks all not checked, o all OK. Labels' text pastes what Labels wrote.
void SetLabels(ToviPhoto& photo, const QString& text) {
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char c = text[i].toLatin1();
        if (c == '-') {
            photo.RemoveLabel(static_cast<unsigned int>(text[++i].digitValue()));
        } else if (c == 'c') {
            photo.SetComment(QStringLiteral("要確認"));
        } else if (c == 'x') {
            photo.RemoveAllLabel();
        } else if (c == 'k') {
            photo.CorrectAllNotCheck();
        } else if (c == 'o') {
            photo.CorrectAllOK();
        } else {
            photo.PasteLabel(static_cast<unsigned int>(text[i].digitValue()));
        }
    }
}

// Labels of every photograph, each followed by ":" and its comment when asked.
QStringList AllLabels(const ToviData& document, bool comments = false) {
    QStringList all;
    for (int k = 0; k < document.GetTotalCountPhoto(); ++k) {
        const ToviPhoto& photo = *document.GetPhotoActualPhotoArray(k);
        all.append(Labels(photo) + (comments ? QLatin1Char(':') + photo.GetComment() : QString()));
    }
    return all;
}

QList<int> IntList(const QString& text) {
    QList<int> list;
    for (const QString& number : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        list.append(number.toInt());
    }
    return list;
}

// Work type tree [A{0}[B{1}],C{2}]; shooting dates 04-03, 04-01, 04-02.
const QStringList kSelectionPhotos{"工種=A;撮影年月日=2024-04-03",
                                   "工種=A;種別=B;撮影年月日=2024-04-01",
                                   "工種=C;撮影年月日=2024-04-02"};

// Root [4, 0, 2, 1, 3, 5]: 土工{4}[掘削{0}, 盛土{2}], 舗装工{1}, 擁壁工{3}, abc{5}. Labels: 1 NG1,
// 2 OK, 3 NG3, 4 NG2. Exif: 0, 2, 4; 5 has no file. File dates: 01-15, 02-01, 02-29, 03-01, 02-10.
const QStringList kExtractionPhotos{
    "工種=土工;種別=掘削;撮影年月日=2024-04-01;代表写真=1;工種区分予備=x;工種区分予備=y",
    "工種=舗装工;撮影年月日=2024-04-10;付加情報予備=z",
    "工種=土工;種別=盛土;撮影年月日=2024-04-30;代表写真=1;参考図タイトル=",
    "工種=擁壁工;撮影年月日=2024-05-01",
    "工種=土工;撮影年月日=;工種区分予備=y",
    "工種=abc;撮影年月日=2024-03-31",
};
const QStringList kLabels{"", "1", "0", "3", "2", ""};
const QList<int> kRootOrder{4, 0, 2, 1, 3, 5};

// A source that remembers what it was told.
class RecordingSource : public ToviExtractionSource {
public:
    ToviExtractionConditions conditions;
    QList<int> told;
    const ToviExtractionConditions& Conditions() const override { return conditions; }
    void CancelExtraction(CancelExt value) override { told.append(value); }
};

// "ng;工種=土工;2024-04-01..2024-04-30;or" and so on: key, ng, notcheck, noexif, required, or,
// title=text (up to three), from..to for the shooting date, file:from..to for the file date.
ToviExtractionConditions Conditions(const QString& text) {
    ToviExtractionConditions c;
    const QStringList names{"key", "ng", "notcheck", "noexif", "required"};
    bool* const flags[]{&c.keyPhoto, &c.ngPhoto, &c.notcheckPhoto, &c.notExifinfo, &c.neceNotwrite};
    int item = 0;
    for (QString token : text.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        if (names.contains(token)) {
            *flags[names.indexOf(token)] = true;
        } else if (token == QLatin1String("or")) {
            c.orMode = 1;
        } else if (token.contains(QLatin1String(".."))) {
            c.dateOn = true;
            c.dateKind = token.startsWith(QLatin1String("file:")) ? 1 : 0;
            c.dateFrom = token.remove(QLatin1String("file:")).section(QStringLiteral(".."), 0, 0);
            c.dateTo = token.section(QStringLiteral(".."), 1);
        } else {
            c.itemOn[item] = true;
            c.itemTitle[item] = token.section(QLatin1Char('='), 0, 0);
            c.itemText[item++] = token.section(QLatin1Char('='), 1);
        }
    }
    return c;
}

QList<int> Reversed(QList<int> list) {
    std::reverse(list.begin(), list.end());
    return list;
}

QList<int> Sorted(ToviData& document, const QString& key, bool ascending, const QList<int>& start) {
    document.CurrentArray().Assign(start);
    ToviSorter sorter(&document);
    sorter.PrepareSort(key, document.CurrentArray());
    sorter.QuickSort(ascending, document.CurrentArray());
    return document.CurrentArray().Indexes();
}

qint64 freeBytes = -1;  // what the free-space probe answers; negative: the real volume

// A record's 写真 element; "<none>" and null flags leave their elements out.
QString PhotoElement(const QString& comment, const QStringList& flags) {
    QString xml = QStringLiteral("<写真>");
    if (comment != QLatin1String("<none>")) {
        xml += QStringLiteral("<コメント>%1</コメント>").arg(comment);
    }
    for (int label = 0; label < flags.size(); ++label) {
        if (!flags[label].isNull()) {
            xml += QStringLiteral("<%1>%2</%1>").arg(ToviXmlManager::LabelTag(label), flags[label]);
        }
    }
    return xml + QStringLiteral("</写真>");
}

}  // namespace

// Tree, selection, extraction, sorting and labels of ToviData, and the inspection record.
class ToviDataReviewTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    int serial = 0;
    RecordingHost host;
    std::unique_ptr<ScriptedUi> ui;  // a fresh one for every test

    // The photo folder of the delivery writer's delivery of count photographs.
    QString Written(int count) { return temp.filePath(QString::number(count) + "/INDEX_C/PHOTO"); }
    std::unique_ptr<ToviData> Open(const QStringList& photos) {
        const QString folder = temp.filePath(QStringLiteral("d%1").arg(++serial));
        return WritePhotoXml(folder, photos) ? Load(&host, folder) : nullptr;
    }
    // The delivery written by initTestCase with the labels given and the work type tree built.
    std::unique_ptr<ToviData> OpenBuilt(const QString& name, const QStringList& labels = {}) {
        std::unique_ptr<ToviData> doc = Load(&host, temp.filePath(name));
        if (doc) {
            for (int k = 0; k < labels.size(); ++k) {
                SetLabels(*doc->GetPhotoActualPhotoArray(k), labels[k]);
            }
            doc->BuildTreeNode(ToviPhotoCtrlVisualSetting::TreeKousyuOnly);
        }
        host.hints.clear();
        return doc;
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("p.ini")));
        const QList<QPair<QString, QStringList>> deliveries{
            {"selection", kSelectionPhotos},
            {"labelled", {"工種=A", "工種=A", "工種=B", "工種=B", "工種=C"}},
            {"switch", {"工種=A;撮影箇所=X", "工種=B;種別=C;撮影箇所=Y", "工種=B", "撮影箇所=Y"}},
            {"extraction", kExtractionPhotos}};
        for (const auto& [name, photos] : deliveries) {
            QVERIFY(WritePhotoXml(temp.filePath(name), photos));
        }
        QImage image(64, 48, QImage::Format_RGB32);
        image.fill(Qt::darkGreen);
        const QList<int> fileDays{15, 32, 60, 61, 41};  // days since 2023-12-31
        for (int k = 0; k < fileDays.size(); ++k) {
            const QString path = temp.filePath(QStringLiteral("extraction/PIC/") + ImageName(k));
            // 1 and 3: Qt writes no Exif.
            QVERIFY(k % 2 ? image.save(path, "JPG") : WriteExifJpeg(path, image, ExifFacts()));
            QFile file(path);
            const QDateTime time(QDate(2023, 12, 31).addDays(fileDays[k]), QTime(12, 0));
            QVERIFY(file.open(QIODevice::ReadWrite) &&
                    file.setFileTime(time, QFileDevice::FileModificationTime));
        }
        DeliveryOptions options;
        options.images = DeliveryOptions::Images::None;
        QString error;
        for (const int count : {10000, 3, 8}) {  // 8: an older generation, without 代表写真
            options.photoCount = count;
            options.generation = count == 8 ? Generation::Mlit11 : Generation::Mlit20;
            QVERIFY2(WriteDelivery(temp.filePath(QString::number(count)), options, nullptr, &error),
                     qPrintable(error));
        }
        ToviXmlSaveManager::SetFreeSpaceProbeForTesting([](const QString&) { return freeBytes; });
    }
    void init() {
        freeBytes = -1;
        ui = std::make_unique<ScriptedUi>();
        ToviUi::Install(ui.get());
    }
    void cleanup() { ToviUi::Install(nullptr); }

    // Assignment copies titles and valid flags to any depth, wired to its own nodes, with no
    // photo indexes, in place of the target's children; a clone has no parent.
    void nodeCopy() {
        std::unique_ptr<ToviData> doc = OpenBuilt(QStringLiteral("selection"));
        QVERIFY(doc);
        ToviNode* b = NodeAt(doc.get(), QStringLiteral("A/B"));
        b->Valid(true);
        ToviNode target(QStringLiteral("T"));
        target.Add(std::make_unique<ToviNode>(QStringLiteral("X")));
        target = *doc;
        ToviNode& alias = target;
        target = alias;
        QCOMPARE(Dump(target), QStringLiteral("[A[B],C]"));
        ToviNode* copied = NodeAt(&target, QStringLiteral("A/B"));
        QVERIFY(copied != b && copied->IsValid() && !target.GetNode(1)->IsValid());
        QCOMPARE(copied->Parent(), target.GetNode(0));
        QCOMPARE(target.GetNode(0)->Parent(), &target);
        QCOMPARE(NodeAt(doc.get(), QStringLiteral("A"))->Clone()->Parent(), nullptr);
        doc->Title(QString());
        QCOMPARE(b->GetFullTitlePath(QStringLiteral(" > ")), QStringLiteral("A > B > "));
    }

    // Where each photograph lands, and what a build shows: the root's own, then each subtree.
    void placements_data() {
        QTest::addColumn<int>("treeType");
        QTest::addColumn<QStringList>("photos");
        QTest::addColumn<QString>("tree");
        QTest::addColumn<QList<int>>("current");
        // clang-format off
        QTest::newRow("A,'',C; absent and empty elements alike") << 2 << QStringList{"工種=A;細別=C", "工種=A;種別=;細別=C"} << "[A[【未記入】[C{0,1}]]]" << QList<int>{0, 1};
        QTest::newRow("all empty on the root") << 2 << QStringList{"", "工種=A", "工種=;種別=;細別="} << "{0,2}[A{1}]" << QList<int>{0, 2, 1};
        QTest::newRow("【未記入】 stays last") << 2 << QStringList{"種別=B", "工種=Z", "工種=A", "工種=Z;種別=B"} << "[Z{1}[B{3}],A{2},【未記入】[B{0}]]" << QList<int>{1, 3, 2, 0};
        QTest::newRow("a value spelled 【未記入】 joins that node") << 2 << QStringList{"種別=B", "工種=【未記入】"} << "[【未記入】{1}[B{0}]]" << QList<int>{1, 0};
        QTest::newRow("type 0 adds the class levels") << 0 << QStringList{"写真区分=施工状況写真;工種=A", "工種=A", "写真-大分類=;工種=A", "工種="} << "[工事{3}[施工状況写真[A{0}],【未記入】[A{1}]],【未記入】[【未記入】[A{2}]]]" << QList<int>{3, 0, 1, 2};
        QTest::newRow("type 1 by shooting place, blank at once") << 1 << QStringList{"撮影箇所=X;工種=A", "工種=B", "撮影箇所=X", "撮影箇所=Y"} << "[X{0,2},Y{3},【未記入】{1}]" << QList<int>{0, 2, 3, 1};
        // clang-format on
    }
    void placements() {
        QFETCH(int, treeType);
        QFETCH(QStringList, photos);
        QFETCH(QString, tree);
        std::unique_ptr<ToviData> doc = Open(photos);
        QVERIFY(doc);
        host.hints.clear();
        doc->BuildTreeNode(treeType);
        QCOMPARE(Dump(*doc), tree);
        QCOMPARE(doc->GetSelectedNode(), static_cast<ToviNode*>(doc.get()));
        QTEST_INTS(doc->CurrentArray().Indexes(), "current");
        QVERIFY(host.hints.isEmpty());  // the host tells the panels itself
        doc->BuildTreeNode(treeType);   // a rebuild starts afresh
        QCOMPARE(Dump(*doc), tree);
    }

    // Selection by scripts of steps: t<n> builds tree n; b appends a photograph in none of the
    // tree's levels; +<k>=<steps> labels photograph k as SetLabels does, p<k> selects it; n<path>
    // selects a node (N: forced; no path: the root), l<n> label n, f the selected photograph's node
    // (!f: that fails); s sorts by shooting date; e<conditions> extracts; a<list> puts photographs
    // on show; u looks for comments; B runs the batch correction; C<0|1>, L<labels> and =<list>
    // check HasComment, AllLabels joined by "|" and what is on show; h forgets the hints. "-"
    // before a delivery: no host.
    void selection_data() {
        QTest::addColumn<QString>("delivery");
        QTest::addColumn<QString>("script");
        QTest::addColumn<QString>("node");  // path of titles; empty for the root
        QTest::addColumn<QList<int>>("current");
        QTest::addColumn<QList<int>>("hints");
        QTest::addColumn<int>("photo");  // the selected photograph, -1 for none
        const QList<int> none;
        const QList<int> changed{ToviData::HintSelectionChanged};
        const QString onC = QStringLiteral("t2 +0=1 +2=1 nC e工種=Z a1 h ");
        const QString commented = QStringLiteral("t2 +1=c +3=4 a");
        // clang-format off
        QTest::newRow("same node, not forced") << "selection" << "t2 nA a2 h nA" << "A" << QList<int>{2} << none << -1;
        QTest::newRow("same node, forced") << "selection" << "t2 nA a2 h NA" << "A" << QList<int>{0, 1} << changed << -1;
        QTest::newRow("the root, in tree order") << "selection" << "t2 nA a2 h n" << "" << QList<int>{0, 1, 2} << changed << -1;
        QTest::newRow("the root, sorted") << "selection" << "t2 s nA a2 h n" << "" << QList<int>{1, 2, 0} << changed << -1;
        QTest::newRow("the same photograph again") << "selection" << "t2 p1 h p1" << "" << QList<int>{0, 1, 2} << none << 1;
        QTest::newRow("no host, nothing on show") << "-selection" << "t2 NA" << "A" << none << none << -1;
        QTest::newRow("from a photograph on a node") << "selection" << "t2 p1 nC h f" << "A/B" << QList<int>{1} << changed << 1;
        QTest::newRow("from a photograph, its node selected") << "selection" << "t2 p1 nA/B h f" << "A/B" << QList<int>{1} << none << 1;
        QTest::newRow("from no photograph") << "selection" << "t2 nC h f" << "" << QList<int>{0, 1, 2} << QList<int>{ToviData::HintSelectionChanged, ToviData::HintPhotoSelected} << 0;
        QTest::newRow("from no photograph, nothing on show") << "selection" << "t2 nC e工種=Z h !f" << "" << none << changed << -1;
        // A label shows its photographs in actual order; node and extraction stay as they were.
        QTest::newRow("label NG1") << "selection" << onC + "l1" << "C" << QList<int>{0, 2} << changed << -1;
        QTest::newRow("label NG1 sorted") << "selection" << "s " + onC + "l1" << "C" << QList<int>{2, 0} << changed << -1;
        QTest::newRow("label without a slot") << "selection" << onC + "l6" << "C" << none << changed << -1;
        QTest::newRow("no label") << "selection" << onC + "l-1" << "C" << none << changed << -1;
        // A new tree selects the node holding the selected photograph, else the root, quietly.
        QTest::newRow("to the photograph's place") << "switch" << "b t2 p1 h t1" << "Y" << QList<int>{1, 3} << none << 1;
        QTest::newRow("photograph in no node") << "switch" << "b t2 p4 h t1" << "" << QList<int>{0, 1, 3, 2} << none << 4;
        // Extraction starts from a node's whole content; a changed photograph doesn't filter.
        QTest::newRow("extraction follows") << "extraction" << "t2 +1=1 +2=0 +3=3 +4=2 eng =4,1,3 n土工 =4 enotcheck =0 t1 =0,5 +0=0 =0,5 h N" << "" << QList<int>{5} << changed << -1;
        // HasComment looks at comment text on show; nothing on show leaves it as it was.
        QTest::newRow("comment label without text") << "labelled" << commented + "0,3 u C0" << "" << QList<int>{0, 3} << none << -1;
        QTest::newRow("comment last on show") << "labelled" << commented + "0,2,1 u C1" << "" << QList<int>{0, 2, 1} << none << -1;
        QTest::newRow("comment only off show") << "labelled" << commented + "0,2,3,4 u C0" << "" << QList<int>{0, 2, 3, 4} << none << -1;
        QTest::newRow("nothing on show after a comment") << "labelled" << commented + "1 u a u C1" << "" << none << none << -1;
        QTest::newRow("every selection looks again") << "labelled" << commented + "1 u C1 l4 C0 nA C1" << "A" << QList<int>{0, 1} << QList<int>{2, 2} << -1;
        // The batch correction over what is on show: B<dialog OK><action><result><changed>.
        const QString marked = QStringLiteral("t2 +1=0 +2=15 +3=4c +4=2 ");
        const QList<int> all{0, 1, 2, 3, 4};
        const QList<int> labels{ToviData::HintLabelsChanged};
        QTest::newRow("batch: cancel in the dialog") << "labelled" << marked + "h B0200 L|0|15|4c|2" << "" << all << none << -1;
        QTest::newRow("batch: OK labels") << "labelled" << marked + "h B1011 L0|0|15|04c|2" << "" << all << labels << -1;
        QTest::newRow("batch: remove everything") << "labelled" << marked + "h B1211 L||||" << "" << all << labels << -1;
        QTest::newRow("batch: OK labels, nothing on show") << "labelled" << marked + "l-1 h B1001 L|0|15|4c|2" << "" << none << labels << -1;
        QTest::newRow("batch: remove everything, nothing on show") << "labelled" << marked + "l-1 h B1211 L|0|15|4c|2" << "" << none << labels << -1;
        QTest::newRow("batch: not checked on the NG extraction") << "labelled" << marked + "eng h B1111 L|0|5|4c|" << "" << QList<int>{2, 4} << labels << -1;
        // clang-format on
    }
    void selection() {
        QFETCH(QString, delivery);
        QFETCH(QString, script);
        QFETCH(QString, node);
        QFETCH(QList<int>, current);
        QFETCH(int, photo);
        const bool hosted = !delivery.startsWith(QLatin1Char('-'));
        std::unique_ptr<ToviData> doc =
            Load(hosted ? &host : nullptr, temp.filePath(delivery.remove(QLatin1Char('-'))));
        QVERIFY(doc);
        host.hints.clear();
        ToviExtractionHolder holder;
        for (const QString& step : script.split(QLatin1Char(' '))) {
            const QChar op = step.at(0);
            const QString arg = step.mid(1);
            if (op == QLatin1Char('t')) {
                doc->BuildTreeNode(arg.toInt());
            } else if (op == QLatin1Char('b')) {
                const int title =
                    doc->GetItemDef()->GetIndexFromTitle(QStringLiteral("写真タイトル"));
                doc->GetPhotoDataArray()->append(std::make_unique<ToviPhoto>(
                    doc.get(), ToviItemArray{ToviItem(title, QStringLiteral("bare"))}));
            } else if (op == QLatin1Char('+')) {
                SetLabels(*doc->GetPhotoActualPhotoArray(arg.section('=', 0, 0).toInt()),
                          arg.section('=', 1));
            } else if (op == QLatin1Char('p')) {
                QVERIFY(doc->PhotoSelectSetting(arg.toInt()));
            } else if (op == QLatin1Char('n') || op == QLatin1Char('N')) {
                doc->SetSelected(NodeAt(doc.get(), arg), op == QLatin1Char('N'));
            } else if (op == QLatin1Char('l')) {
                doc->SetSelected(arg.toInt());
                QCOMPARE(doc->GetSelectedIndex(), arg.toInt());
                QCOMPARE(doc->CountLabel(static_cast<unsigned long>(arg.toInt())),
                         doc->CurrentArray().GetSize());
            } else if (op == QLatin1Char('f')) {
                doc->SetSelected();
            } else if (op == QLatin1Char('!')) {
                QVERIFY_THROWS_EXCEPTION(std::out_of_range, doc->SetSelected());
            } else if (op == QLatin1Char('s')) {
                doc->GetSortConditionObject()->ExecSort(true);  // by 撮影年月日, ascending
            } else if (op == QLatin1Char('e')) {
                holder.conditions = Conditions(arg);
                doc->SetExtractionData(&holder);
                doc->ExecExtraction();
            } else if (op == QLatin1Char('a')) {
                doc->CurrentArray().Assign(IntList(arg));
            } else if (op == QLatin1Char('B')) {
                const bool ok = arg.startsWith(QLatin1Char('1'));
                const bool hadComment = doc->HasComment();
                ui->QueueDialog(ok, {{QStringLiteral("action"), arg.mid(1, 1).toInt()}});
                ui->QueueAnswer(ToviUi::AnswerOk);
                QCOMPARE(doc->AllLabelCorrection(), arg.at(2) == QLatin1Char('1'));
                QCOMPARE(doc->IsCheckStatusChanged(), arg.at(3) == QLatin1Char('1'));
                QCOMPARE(ui->DialogNames(), QStringList{QStringLiteral("LabelProcessSelectDlg")});
                QCOMPARE(ui->DialogInputs().first().value(QStringLiteral("action")).toInt(), 0);
                QCOMPARE(ui->Questions().size(), ok ? 1 : 0);
                QVERIFY(!ok || ui->Questions().first().buttons == ToviUi::ButtonsOkCancel);
                QCOMPARE(doc->HasComment(), hadComment);  // until the next look
            } else if (op == QLatin1Char('L')) {
                QCOMPARE(AllLabels(*doc).join(QLatin1Char('|')), arg);
            } else if (op == QLatin1Char('u')) {
                doc->UpdateHasComment();
            } else if (op == QLatin1Char('C')) {
                QCOMPARE(doc->HasComment(), arg == QLatin1String("1"));
            } else if (op == QLatin1Char('=')) {
                QCOMPARE(doc->CurrentArray().Indexes(), IntList(arg));
            } else {
                QCOMPARE(step, QStringLiteral("h"));
                host.hints.clear();
            }
        }
        QCOMPARE(doc->GetSelectedNode(), NodeAt(doc.get(), node));  // never null
        QCOMPARE(doc->CurrentArray().Indexes(), current);
        QTEST_INTS(host.hints, "hints");
        QCOMPARE(doc->GetSelectedPhoto(), doc->GetPhotoActualPhotoArray(photo));
        QVERIFY(photo < 0 || doc->GetSelectedPhoto()->IsSelected());
        const int position = static_cast<int>(current.indexOf(photo));
        QCOMPARE(doc->GetSelectCurIndex(), position);
        int pos = 7;
        doc->GetIndexSelected(pos);
        QCOMPARE(pos, current.isEmpty() ? 7 : position);  // nothing on show leaves pos alone
        QCOMPARE(doc->IsExtractionOn(), script.contains(QLatin1String(" e")));
    }

    // Any combination of labels is taken as pasted; steps as SetLabels takes them.
    void photographLabels_data() {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<QString>("labels");
        QTest::addColumn<QList<bool>>("state");  // OK, NG, not checked
        // clang-format off
        QTest::newRow("OK pasted over NG") << "10" << "01" << QList<bool>{true, true, false};
        QTest::newRow("comment label alone") << "4" << "4" << QList<bool>{false, false, true};
        QTest::newRow("slot 6 removed") << "3-6" << "3" << QList<bool>{false, true, false};
        QTest::newRow("remove all empties the comment") << "0145cx" << "" << QList<bool>{false, false, true};
        QTest::newRow("not checked keeps 4, 5 and the comment") << "0345ck" << "45c" << QList<bool>{false, false, true};
        QTest::newRow("all OK keeps 4 and the comment") << "234co" << "04c" << QList<bool>{true, false, false};
        // clang-format on
    }
    void photographLabels() {
        QFETCH(QString, labels);
        std::unique_ptr<ToviData> doc = OpenBuilt(QStringLiteral("labelled"));
        QVERIFY(doc);
        ToviPhoto& photo = *doc->GetPhotoActualPhotoArray(3);
        QFETCH(QString, steps);
        SetLabels(photo, steps);
        QCOMPARE(Labels(photo), labels);
        QTEST((QList<bool>{photo.IsOK(), photo.HasNGLabel(), photo.IsNotCheck()}), "state");
        QCOMPARE(doc->IsLabeled(), labels.contains(QRegularExpression("[0-5]")) ? 1 : 0);
    }

    // Each row's result is a subset of the root's content, in the root's order; a cancel leaves
    // it whole. A photograph without a shooting date (4, the root's first) is passed over at
    // once when that date decides: no progress text, no cancel test, no step.
    void conditions_data() {
        QTest::addColumn<QString>("conditions");
        QTest::addColumn<QList<int>>("found");
        QTest::addColumn<int>("firstMessage");
        QTest::addColumn<bool>("cancel");
        // clang-format off
        QTest::newRow("AND with nothing on") << "" << kRootOrder << 1 << false;
        QTest::newRow("OR with nothing on") << "or" << QList<int>{} << 1 << false;
        QTest::newRow("key photograph") << "key" << QList<int>{0, 2} << 1 << false;
        QTest::newRow("NG") << "ng" << QList<int>{4, 1, 3} << 1 << false;
        QTest::newRow("NG or not checked") << "ng;notcheck;or" << QList<int>{4, 0, 1, 3, 5} << 1 << false;
        QTest::newRow("no Exif, missing file included") << "noexif" << QList<int>{1, 3, 5} << 1 << false;
        QTest::newRow("required item stored empty") << "required" << QList<int>{4, 2} << 1 << false;
        QTest::newRow("item equal") << "工種=土工" << QList<int>{4, 0, 2} << 1 << false;
        QTest::newRow("item case matters") << "工種=ABC" << QList<int>{} << 1 << false;
        QTest::newRow("item is no substring search") << "工種=土" << QList<int>{} << 1 << false;
        QTest::newRow("repeated item, any value") << "工種区分予備=y" << QList<int>{4, 0} << 1 << false;
        QTest::newRow("marker on stored empty values") << "種別=【未記入】" << QList<int>{4, 1, 3, 5} << 1 << false;
        QTest::newRow("marker needs the item") << "付加情報予備=【未記入】" << QList<int>{2} << 1 << false;
        QTest::newRow("unknown title rejects in AND") << "施工者=x;2024-04-01..2024-04-30" << QList<int>{} << 1 << false;
        QTest::newRow("unknown title passes on in OR") << "施工者=x;2024-04-01..2024-04-30;or" << QList<int>{0, 2, 1} << 2 << false;
        QTest::newRow("three items AND") << "工種=土工;種別=盛土;代表写真=1" << QList<int>{2} << 1 << false;
        QTest::newRow("date range includes both ends") << "2024-04-01..2024-04-30" << QList<int>{0, 2, 1} << 2 << false;
        QTest::newRow("file date") << "file:2024-02-01..2024-02-29" << QList<int>{4, 2, 1} << 1 << false;
        QTest::newRow("NG, item and file date") << "ng;工種=土工;file:2024-02-01..2024-02-29" << QList<int>{4} << 1 << false;
        QTest::newRow("cancel at the first photograph") << "ng" << kRootOrder << 1 << true;
        // clang-format on
    }
    void conditions() {
        QFETCH(QString, conditions);
        QFETCH(int, firstMessage);
        QFETCH(bool, cancel);  // at the first photograph
        std::unique_ptr<ToviData> doc = OpenBuilt(QStringLiteral("extraction"), kLabels);
        QVERIFY(doc);
        RecordingSource source;
        source.conditions = Conditions(conditions);
        doc->SetExtractionData(&source);
        ui->PressCancelAtPump(cancel ? ui->Pumps() + 1 : -1);

        doc->ExecExtraction();
        QTEST_INTS(doc->CurrentArray().Indexes(), "found");
        QCOMPARE(doc->IsExtractionOn(), !cancel);  // nothing found still ends normally
        QCOMPARE(source.told.size(), cancel ? 1 : 0);
        QCOMPARE(host.hints, QList<int>{ToviData::HintSelectionChanged});
        QCOMPARE(AllLabels(*doc), kLabels);  // filtering only
        const int count = static_cast<int>(kRootOrder.size());
        QStringList messages;
        for (int n = firstMessage; n <= (cancel ? 1 : count); ++n) {
            messages.append(QStringLiteral("写真データ抽出中　%1 / %2").arg(n).arg(count));
        }
        QCOMPARE(ui->LastProgress()->messages, messages);
        QCOMPARE(ui->LastProgress()->positions.last(), cancel ? 0 : count - firstMessage + 1);
        QCOMPARE(ui->LastProgress()->closeCount, 1);
        // Off now, or told once more and switched off; the next selection is not filtered.
        doc->CancelExtraction(ToviExtractionSource::CancelButtonOnly);
        QCOMPARE(source.told, QList<int>{ToviExtractionSource::CancelButtonOnly});
        doc->SetSelected(doc.get(), true);
        QCOMPARE(doc->CurrentArray().Indexes(), kRootOrder);
        QCOMPARE(ui->ProgressViews().size(), 1);
    }

    // The 代表写真 condition on a delivery that doesn't define that item never decides: AND
    // passes the photographs on to the NG test, OR finds nothing with it.
    void keyPhotoWithoutDefinition() {
        std::unique_ptr<ToviData> doc = Load(&host, Written(8));
        QVERIFY(doc);
        QVERIFY(doc->GetItemDef()->GetIndexFromTitle(QStringLiteral("代表写真")) < 0);
        doc->GetPhotoActualPhotoArray(1)->PasteLabel(2);
        doc->GetPhotoActualPhotoArray(5)->PasteLabel(3);
        doc->BuildTreeNode(ToviPhotoCtrlVisualSetting::TreeKousyuOnly);
        QCOMPARE(doc->CurrentArray().GetSize(), 8);
        ToviExtractionHolder holder;
        doc->SetExtractionData(&holder);
        for (const char* conditions : {"key;ng", "key;ng;or"}) {
            holder.conditions = Conditions(QString::fromLatin1(conditions));
            doc->ExecExtraction();
            QList<int> found = doc->CurrentArray().Indexes();
            std::sort(found.begin(), found.end());
            QCOMPARE(found, (QList<int>{1, 5}));
        }
    }

    // Both ways from two starting orders: descending is the exact reverse of ascending.
    void order_data() {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<QList<int>>("ascending");
        // clang-format off
        // Code page 932, bytes unsigned: "a" 61 < "Ａ" 82 60 < "あ" 82 A0 < "あい" < "ｱ" B1.
        QTest::newRow("text in code page 932 order") << QStringLiteral("写真タイトル") << QStringList{"あ", "ｱ", "a", "Ａ", "あい", ""} << QList<int>{5, 2, 3, 0, 4, 1};
        // Longer than 16 bytes with a common start, and prefixes: the shorter first.
        QTest::newRow("long keys with a common start") << QStringLiteral("写真タイトル") << QStringList{"あいうえおかきくけ", "あいうえおかきく", "あいうえおかきくこ", "あいうえおかきくけ", "あいうえおかきくけa", "あいうえおかきか", "あいうえおかき"} << QList<int>{6, 5, 1, 0, 3, 4, 2};
        // Like atoi: sign and leading digits count, anything else is 0, beyond int is largest.
        QTest::newRow("serial number read like atoi") << QStringLiteral("シリアル番号") << QStringList{"12", "+3", "-4", "abc", "", "５", "99999999999", "0012x", " 8", "7a"} << QList<int>{2, 3, 4, 5, 1, 9, 8, 0, 7, 6};
        QTest::newRow("equal dates keep the actual order, empty first") << QStringLiteral("撮影年月日") << QStringList{"2023-04-02", "2023-04-01", "2023-04-02", "", "2023-04-01"} << QList<int>{3, 1, 4, 0, 2};
        // clang-format on
    }
    void order() {
        QFETCH(QString, key);
        QFETCH(QStringList, values);
        QFETCH(QList<int>, ascending);
        QStringList photos;
        QList<int> actual;
        for (const QString& value : values) {
            actual.append(static_cast<int>(photos.size()));
            photos.append(key + QLatin1Char('=') + value);
        }
        std::unique_ptr<ToviData> document = Open(photos);
        QVERIFY(document);
        for (const QList<int>& start : {actual, Reversed(actual)}) {
            QCOMPARE(Sorted(*document, key, true, start), ascending);
            QCOMPARE(Sorted(*document, key, false, start), Reversed(ascending));
        }
        // The public comparisons agree with the sort, and descending mirrors them exactly.
        ToviSorter sorter(document.get());
        sorter.PrepareSort(key, document->CurrentArray());
        for (const ToviSorter::Data& a : sorter.Entries()) {
            for (const ToviSorter::Data& b : sorter.Entries()) {
                const int up = ToviSorter::CompareUp(a, b);
                QCOMPARE(up < 0, ascending.indexOf(a.index) < ascending.indexOf(b.index));
                QCOMPARE(ToviSorter::CompareDown(a, b) < 0, up > 0);
            }
        }
    }

    // Labels and comments of 10,000 photographs come back through both writers; only the
    // plain save clears the changed flag.
    void roundTrip() {
        std::unique_ptr<ToviData> document = Load(nullptr, Written(10000));
        QVERIFY(document);
        QRandomGenerator random(7);
        for (int i = 0; i < document->GetTotalCountPhoto(); ++i) {
            ToviPhoto* photo = document->GetPhotoActualPhotoArray(i);
            photo->SetComment(random.bounded(3) ? QString()
                                                : QStringLiteral("指摘 %1 <&>\"'\n\t末尾").arg(i));
            for (int label = 0; label < ToviPhoto::kLabelCount; ++label) {
                if (random.bounded(4) == 0) {
                    photo->PasteLabel(static_cast<unsigned>(label));
                }
            }
        }
        document->GetPhotoActualPhotoArray(5)->SetComment(QString(1 << 20, QChar(u'検')));
        document->SetCheckStatusChanged(true);
        const QStringList saved = AllLabels(*document, true);

        const QString record = temp.filePath(QStringLiteral("round.xml"));
        const QString withPaths = temp.filePath(QStringLiteral("round-paths.xml"));
        int result = -1;
        QVERIFY(document->ReturnExam(withPaths, &result) && document->IsCheckStatusChanged());
        QVERIFY(document->SaveExamination(record, QString(), &result));
        QVERIFY(!document->IsCheckStatusChanged());
        const QByteArray bytes = ReadAll(record);
        QVERIFY(
            bytes.startsWith("<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n"
                             "<!DOCTYPE examinationdata SYSTEM \"\">\n"));
        QCOMPARE(bytes.count("<?xml"), 1);
        QVERIFY(ReadAll(withPaths).contains(
            "<" + Cp932::FromUnicode(QStringLiteral("写真ファイルパス")) + ">"));
        for (const QString& path : {record, withPaths}) {
            std::unique_ptr<ToviData> again = Load(nullptr, Written(10000));
            QVERIFY(again->LoadExamination(path, &result));
            QCOMPARE(AllLabels(*again, true), saved);
            QVERIFY(!again->IsCheckStatusChanged());
        }
    }

    // Save failures leave the target as it was and say why.
    void saveFailures_data() {
        QTest::addColumn<QString>("situation");
        QTest::addColumn<int>("expected");
        QTest::newRow("read-only target") << "read-only" << int(ExamReadOnly);
        QTest::newRow("free space exactly the estimate") << "exact space" << int(ExamNoSpace);
        QTest::newRow("cancel at the last photograph") << "cancel" << int(ExamCancelled);
        QTest::newRow("folder gone") << "no folder" << int(ExamSaveFailed);
        QTest::newRow("disk full while writing") << "disk full" << int(ExamSaveFailed);
    }
    void saveFailures() {
        QFETCH(QString, situation);
        std::unique_ptr<ToviData> document = Load(nullptr, Written(3));
        QVERIFY(document);
        document->GetPhotoActualPhotoArray(0)->PasteLabel(2);
        document->SetCheckStatusChanged(true);
        const QString target = temp.filePath(QStringLiteral("fail.xml"));
        QString path = target;
        const QByteArray old = "old record";
        QFile::remove(path);
        QVERIFY(WriteAll(path, old));
        if (situation == QLatin1String("read-only")) {
            QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup));
        } else if (situation == QLatin1String("exact space")) {
            freeBytes = 500 + 300 * 3 - old.size();  // needed beyond what the old file frees
        } else if (situation == QLatin1String("cancel")) {
            ui->PressCancelAtPump(ui->Pumps() + 3);
        } else if (situation == QLatin1String("no folder")) {
            path = temp.filePath(QStringLiteral("gone/fail.xml"));
        } else if (situation == QLatin1String("disk full")) {
            MibSetWriteLimitForTesting(100);
        }
        int result = -1;
        const bool saved = document->SaveExamination(path, QString(), &result);
        MibSetWriteLimitForTesting(-1);
        QFile::setPermissions(target, QFile::ReadOwner | QFile::WriteOwner);
        QVERIFY(!saved);
        QTEST(result, "expected");
        QCOMPARE(ReadAll(target), old);
        QVERIFY(document->IsCheckStatusChanged());
        QCOMPARE(QDir(temp.path()).entryList({QStringLiteral("fail.xml*")}, QDir::Files).size(), 1);
        if (situation == QLatin1String("exact space")) {
            freeBytes += 1;  // one byte more is enough
            QVERIFY(document->SaveExamination(path, QString(), &result));
        }
    }
    // An empty document saves a frame that loads back as "no status"; no path saves nothing.
    void emptyDocument() {
        QDir().mkpath(temp.filePath(QStringLiteral("empty")));
        ToviData document(nullptr, temp.filePath(QStringLiteral("empty")), PhotoXMLMlit);
        const QString path = temp.filePath(QStringLiteral("empty.xml"));
        int result = -1;
        QVERIFY(document.SaveExamination(path, QString(), &result));
        QVERIFY(
            ReadAll(path).contains(Cp932::FromUnicode(QStringLiteral("<写真枚数>0</写真枚数>"))));
        QVERIFY(!document.LoadExamination(path, &result));
        QCOMPARE(result, int(ExamNoStatus));
        QVERIFY(!document.SaveExamination(QString(), QString(), &result));
    }

    // Loading checks the frame before touching any photograph, then merges: a value missing, or
    // a flag other than "0" and "1", stays as it was.
    void loadAndMerge_data() {
        QTest::addColumn<QString>("body");  // empty: no file at all
        QTest::addColumn<int>("expected");  // -1: loads
        QTest::addColumn<QStringList>("review");
        const QStringList before{"0c:前", "1:", ":"};
        const QString frame = QStringLiteral(
            "<検査状況><情報><写真枚数>%1</写真枚数></情報><状況>%2</状況></検査状況>");
        const QString three = PhotoElement("新", {"0", "1", "", "2", QString(), "1"}) +
                              PhotoElement("<none>", {"1"}) + PhotoElement(QString(), {}) +
                              QStringLiteral("<謎/>");
        const int countWrong = ExamCountWrong;
        QTest::newRow("merge rules")
            << frame.arg(3).arg(three) << -1 << QStringList{"15c:新", "01:", ":"};
        QTest::newRow("another count") << frame.arg(4).arg(three) << countWrong << before;
        QTest::newRow("count without digits") << frame.arg("三").arg(three) << countWrong << before;
        QTest::newRow("no file") << QString() << countWrong << before;
        QTest::newRow("empty status") << frame.arg(3).arg(QString()) << int(ExamNoStatus) << before;
        QTest::newRow("no status")
            << QStringLiteral("<検査状況><情報><写真枚数>3</写真枚数></情報></検査状況>")
            << int(ExamNoStatus) << before;
    }
    void loadAndMerge() {
        QFETCH(QString, body);
        QFETCH(int, expected);
        std::unique_ptr<ToviData> document = Load(nullptr, Written(3));
        QVERIFY(document);
        document->GetPhotoActualPhotoArray(0)->PasteLabel(0);
        document->GetPhotoActualPhotoArray(0)->SetComment(QStringLiteral("前"));
        document->GetPhotoActualPhotoArray(1)->PasteLabel(1);
        const QString path = temp.filePath(QStringLiteral("load.xml"));
        QFile::remove(path);
        QVERIFY(body.isEmpty() ||
                WriteAll(path, Cp932::FromUnicode(
                                   "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n" + body)));
        int result = -1;
        QCOMPARE(document->LoadExamination(path, &result), expected < 0);
        QCOMPARE(result, expected < 0 ? result : expected);
        QTEST(AllLabels(*document, true), "review");
    }

    // A save killed while it writes leaves the previous record byte for byte.
    void killDuringSave() {
        const QString tovi = QCoreApplication::applicationDirPath() + QStringLiteral("/tovi");
        const QString path = temp.filePath(QStringLiteral("killed.xml"));
        const QString profile = temp.filePath(QStringLiteral("kill.ini"));
        const QStringList save{"--profile", profile, "label",  Written(10000),
                               "--record",  path,    "--paste"};
        QCOMPARE(RunProgram(tovi, save + QStringList{"0:1"}).exitCode, 0);
        const QByteArray old = ReadAll(path);
        QVERIFY(old.size() > 1000000);

        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TOVI_WRITE_PAUSE_MS"), QStringLiteral("20000"));
        process.setProcessEnvironment(environment);
        process.start(tovi, save + QStringList{"1:2"});
        QVERIFY(process.waitForStarted());
        // After the load, half the new record waits 20 s in the writer's temporary file.
        QTest::qWait(3000);
        QCOMPARE(process.state(), QProcess::Running);
        process.kill();
        QVERIFY(process.waitForFinished());
        QCOMPARE(ReadAll(path), old);
        QCOMPARE(QDir(temp.path()).entryList({QStringLiteral("killed.xml*")}, QDir::Files),
                 QStringList{QStringLiteral("killed.xml")});
    }
};

QTEST_GUILESS_MAIN(ToviDataReviewTest)
#include "ToviDataReviewTest.moc"

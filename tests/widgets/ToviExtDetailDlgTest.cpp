#include "tests/widgets/ExtractionFixture.h"

// The detail dialog of the extraction window, and what its conditions do to the current array
// compared with the command line.

class ToviExtDetailDlgTest : public QObject, public ExtractionFixture {
    Q_OBJECT

private slots:
    void initTestCase() { WriteDeliveries(); }
    void init() { StartUi(); }
    void cleanup() { StopUi(); }
    void cleanupTestCase() { Finish(); }

    // OK refuses an item without a text and a range that ends before it starts, in a warning
    // titled 設定エラー, and leaves what was entered as it was; a range of one day passes.
    void detailValidation() {
        std::unique_ptr<ToviMainWindow> window = OpenViewer(withKey);
        QVERIFY(window);
        ToviExtractionDlg* dlg = window->ExtractionDlg();
        const QDate day(2024, 6, 2);
        bool openAfterEmpty = false, openAfterRange = false, keptInput = false;
        Details(dlg, [&](ToviExtDetailDlg* detail) {
            Click(detail->ItemCheck(0));
            Choose(detail->ItemList(0), QStringLiteral("工種"));
            Retype(detail->ValueList(0), QString());
            Click(Button(detail, "ok"));
            openAfterEmpty = detail->isVisible();
            Retype(detail->ValueList(0), commonKousyu);
            Click(detail->DateCheck());
            TypeDate(detail->DateFrom(), day);
            TypeDate(detail->DateTo(), day.addDays(-1));
            Click(Button(detail, "ok"));
            openAfterRange = detail->isVisible();
            keptInput = detail->ItemCheck(0)->isChecked() &&
                        detail->ItemList(0)->currentText() == QStringLiteral("工種") &&
                        detail->ValueList(0)->currentText() == commonKousyu &&
                        detail->DateCheck()->isChecked() && detail->DateFrom()->date() == day &&
                        detail->DateTo()->date() == day.addDays(-1);
            TypeDate(detail->DateTo(), day);
            Click(Button(detail, "ok"));
        });
        QVERIFY(openAfterEmpty);
        QVERIFY(openAfterRange);
        QVERIFY(keptInput);
        QCOMPARE(ui->Questions().size(), 2);
        QCOMPARE(ui->Questions()[0].text,
                 QStringLiteral("抽出文字列が未入力です。抽出したい内容を記入してください。"));
        QCOMPARE(ui->Questions()[1].text,
                 QStringLiteral("日付の設定に誤りがあります。\n左側の日付は右側の日付を超えない"
                                "ように設定してください。"));
        for (const ScriptedUi::Question& q : ui->Questions()) {
            QCOMPARE(q.caption, QStringLiteral("設定エラー"));
            QCOMPARE(q.icon, ToviUi::IconWarning);
        }
        const ToviExtractionConditions& c = dlg->Conditions();
        QVERIFY(c.itemOn[0] && !c.itemOn[1] && !c.itemOn[2]);
        QCOMPARE(c.itemTitle[0], QStringLiteral("工種"));
        QCOMPARE(c.itemText[0], commonKousyu);
        QVERIFY(c.dateOn);
        QCOMPARE(c.dateKind, 0);
        QCOMPARE(c.dateFrom, QStringLiteral("2024-06-02"));
        QCOMPARE(c.dateTo, QStringLiteral("2024-06-02"));
        QVERIFY(dlg->ExecuteButton()->isEnabled());
    }

    // A text that no photograph has is kept as typed and comes back in the edit part; Cancel
    // leaves the conditions and the display as they were.
    void detailFreeTextAndCancel() {
        std::unique_ptr<ToviMainWindow> window = OpenViewer(withKey);
        QVERIFY(window);
        ToviExtractionDlg* dlg = window->ExtractionDlg();
        const QString free = QStringLiteral("存在しない撮影箇所");
        Details(dlg, [&](ToviExtDetailDlg* detail) {
            Click(detail->ItemCheck(1));
            Choose(detail->ItemList(1), QStringLiteral("撮影箇所"));
            Retype(detail->ValueList(1), free);
            Click(Button(detail, "ok"));
        });
        QCOMPARE(dlg->Conditions().itemText[1], free);
        Click(dlg->ExecuteButton());
        QCOMPARE(Current(*window), QList<int>());
        const ToviExtractionConditions before = dlg->Conditions();

        QString shownTitle, shownText;
        Details(dlg, [&](ToviExtDetailDlg* detail) {
            shownTitle = detail->ItemList(1)->currentText();
            shownText = detail->ValueList(1)->currentText();
            Click(detail->ItemCheck(1));  // off
            Click(detail->ItemCheck(2));
            Click(detail->findChild<QRadioButton*>(QStringLiteral("orMode")));
            Click(Button(detail, "cancel"));
        });
        QCOMPARE(shownTitle, QStringLiteral("撮影箇所"));
        QCOMPARE(shownText, free);
        const ToviExtractionConditions& after = dlg->Conditions();
        QCOMPARE(after.itemOn, before.itemOn);
        QCOMPARE(after.itemTitle, before.itemTitle);
        QCOMPARE(after.itemText, before.itemText);
        QCOMPARE(after.orMode, 0);
        QVERIFY(dlg->IsRunning());
        QCOMPARE(Current(*window), QList<int>());
    }

    // The lists: titles of the items shown in the main list or the zoom view, in table order;
    // values distinct in first-seen order, with 【未記入】 last where a blank is stored. A row
    // whose title has gone opens on the first title; a row that is off has nothing chosen.
    void detailLists() {
        std::unique_ptr<ToviMainWindow> window = OpenViewer(withKey);
        QVERIFY(window);
        ToviData* data = window->Document()->Data();
        ToviExtDetailDlg detail;
        detail.SetData(data);
        detail.conditions.itemOn = {true, true, false};
        detail.conditions.itemTitle = {QStringLiteral("撮影箇所"), QStringLiteral("消えた項目")};
        detail.conditions.itemText = {commonPlace, QStringLiteral("何か")};
        detail.show();
        QVERIFY(QTest::qWaitForWindowExposed(&detail));

        const QComboBox* titles = detail.ItemList(0);
        QStringList shown;
        for (int i = 0; i < titles->count(); ++i) {
            shown.append(titles->itemText(i));
        }
        QVERIFY(shown.contains(QStringLiteral("撮影箇所")));
        QVERIFY(shown.contains(QStringLiteral("工種")));
        QVERIFY(!shown.contains(QStringLiteral("写真情報")));  // a block, not an item
        QCOMPARE(titles->currentText(), QStringLiteral("撮影箇所"));

        QStringList values;
        for (int i = 0; i < detail.ValueList(0)->count(); ++i) {
            values.append(detail.ValueList(0)->itemText(i));
        }
        QCOMPARE(values, DistinctInOrder(places) << ToviNode::kUnfilledTitle);
        QCOMPARE(detail.ValueList(0)->currentText(), commonPlace);

        QCOMPARE(detail.ItemList(1)->currentIndex(), 0);
        QCOMPARE(detail.ValueList(1)->currentText(), QStringLiteral("何か"));
        QCOMPARE(detail.ItemList(2)->currentIndex(), -1);
        QVERIFY(!detail.ItemList(2)->isEnabled() && !detail.ValueList(2)->isEnabled());
        QVERIFY(!detail.DateFrom()->isEnabled());

        // Every photograph has a title: no marker. Turning a row on picks the first title, and
        // choosing another fills its values and picks the first.
        const QStringList titleValues =
            DistinctInOrder(Written(written, QStringLiteral("写真タイトル")));
        Click(detail.ItemCheck(2));
        QCOMPARE(detail.ItemList(2)->currentIndex(), 0);
        Choose(detail.ItemList(2), QStringLiteral("写真タイトル"));
        const QComboBox* title = detail.ValueList(2);
        QStringList listed;
        for (int i = 0; i < title->count(); ++i) {
            listed.append(title->itemText(i));
        }
        QCOMPARE(listed, titleValues);
        QCOMPARE(title->currentText(), titleValues.first());
        detail.reject();
    }

    // The window's conditions narrow the current array exactly as tovi list does with the
    // same options, photograph for photograph and in the same order.
    void matchesCommandLine_data() {
        QTest::addColumn<QStringList>("checks");
        QTest::addColumn<QStringList>("items");  // title=value
        QTest::addColumn<QString>("dates");      // FROM..TO, or empty
        QTest::addColumn<int>("dateKind");
        QTest::addColumn<bool>("orMode");
        // From the date of the third photograph to that of the twenty-sixth.
        const QStringList dates = Written(written, QStringLiteral("撮影年月日"));
        QVERIFY(!dates[2].isEmpty() && !dates[25].isEmpty());
        const QString range =
            std::min(dates[2], dates[25]) + QStringLiteral("..") + std::max(dates[2], dates[25]);
        const QString place = QStringLiteral("撮影箇所=") + commonPlace;
        const QString work = QStringLiteral("工種=") + commonKousyu;
        QTest::newRow("two items, and")
            << QStringList() << QStringList{place, work} << QString() << 0 << false;
        QTest::newRow("blank place")
            << QStringList() << QStringList{QStringLiteral("撮影箇所=【未記入】")} << QString() << 0
            << false;
        QTest::newRow("item or date") << QStringList() << QStringList{work} << range << 0 << true;
        QTest::newRow("key photo and date")
            << QStringList{QStringLiteral("keyPhoto")} << QStringList() << range << 0 << false;
        QTest::newRow("not checked and item") << QStringList{QStringLiteral("notcheckPhoto")}
                                              << QStringList{place} << QString() << 0 << false;
        QTest::newRow("key photo or three items")
            << QStringList{QStringLiteral("keyPhoto")}
            << QStringList{work, place, QStringLiteral("写真区分=施工状況写真")} << QString() << 0
            << true;
        QTest::newRow("file date") << QStringList() << QStringList()
                                   << QStringLiteral("2020-01-01..2020-12-31") << 1 << false;
    }
    void matchesCommandLine() {
        QFETCH(QStringList, checks);
        QFETCH(QStringList, items);
        QFETCH(QString, dates);
        QFETCH(int, dateKind);
        QFETCH(bool, orMode);
        std::unique_ptr<ToviMainWindow> window = OpenViewer(withKey);
        QVERIFY(window);
        ToviExtractionDlg* dlg = window->ExtractionDlg();
        ToviData* data = window->Document()->Data();
        QCOMPARE(data->GetSelectedNode(), static_cast<ToviNode*>(data));

        QStringList args{QStringLiteral("--profile"),
                         Path(QStringLiteral("cli.ini")),
                         QStringLiteral("list"),
                         withKey,
                         QStringLiteral("--json"),
                         QStringLiteral("--type"),
                         QString::number(data->GetVisualSetting().GetTreeType())};
        for (const QString& check : checks) {
            Click(Check(dlg, check));
            static const QHash<QString, QString> kOptions{
                {QStringLiteral("keyPhoto"), QStringLiteral("--key-photo")},
                {QStringLiteral("ngPhoto"), QStringLiteral("--ng")},
                {QStringLiteral("notcheckPhoto"), QStringLiteral("--not-checked")},
                {QStringLiteral("notExifinfo"), QStringLiteral("--no-exif")},
                {QStringLiteral("neceNotwrite"), QStringLiteral("--required-missing")}};
            args << kOptions.value(check);
        }
        for (const QString& item : items) {
            args << QStringLiteral("--item") << item;
        }
        if (!dates.isEmpty()) {
            args << QStringLiteral("--date") << dates << QStringLiteral("--date-kind")
                 << QString::number(dateKind);
        }
        if (orMode) {
            args << QStringLiteral("--or");
        }
        if (!items.isEmpty() || !dates.isEmpty() || orMode) {
            Details(dlg, [&](ToviExtDetailDlg* detail) {
                for (int j = 0; j < items.size(); ++j) {
                    const qsizetype eq = items[j].indexOf(QLatin1Char('='));
                    Click(detail->ItemCheck(j));
                    Choose(detail->ItemList(j), items[j].left(eq));
                    Retype(detail->ValueList(j), items[j].mid(eq + 1));
                }
                if (!dates.isEmpty()) {
                    Click(detail->DateCheck());
                    Click(detail->findChild<QRadioButton*>(
                        dateKind != 0 ? QStringLiteral("fileDate") : QStringLiteral("shotDate")));
                    const QStringList range = dates.split(QStringLiteral(".."));
                    TypeDate(detail->DateFrom(),
                             QDate::fromString(range[0], QStringLiteral("yyyy-MM-dd")));
                    TypeDate(detail->DateTo(),
                             QDate::fromString(range[1], QStringLiteral("yyyy-MM-dd")));
                }
                if (orMode) {
                    Click(detail->findChild<QRadioButton*>(QStringLiteral("orMode")));
                }
                Click(Button(detail, "ok"));
            });
        }
        // What reached the conditions is what the command line is given.
        const ToviExtractionConditions& c = dlg->Conditions();
        for (int j = 0; j < items.size(); ++j) {
            QCOMPARE(c.itemTitle[j] + QLatin1Char('=') + c.itemText[j], items[j]);
        }
        QCOMPARE(c.dateOn ? c.dateFrom + QStringLiteral("..") + c.dateTo : QString(), dates);
        QCOMPARE(c.orMode != 0, orMode);
        Click(dlg->ExecuteButton());

        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), Path(QStringLiteral("home")));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), Path(QStringLiteral("home")));
        environment.insert(QStringLiteral("XDG_CACHE_HOME"), Path(QStringLiteral("home")));
        const ProgramRun run = RunProgram(
            QCoreApplication::applicationDirPath() + QStringLiteral("/tovi"), args, environment);
        QVERIFY2(run.exitCode == 0, qPrintable(run.err));
        QList<int> expected;
        for (const QJsonValue& v :
             QJsonDocument::fromJson(run.out).object().value(QStringLiteral("current")).toArray()) {
            expected.append(v.toInt());
        }
        QCOMPARE(Current(*window), expected);
        // Not a trivial agreement: every row narrows to some photographs.
        QVERIFY(!expected.isEmpty() && expected.size() < written.photos.size());
    }
};

QTEST_MAIN(ToviExtDetailDlgTest)
#include "ToviExtDetailDlgTest.moc"

#include "dialogs/ToviPropertyDlg.h"
#include "dialogs/ToviSvgView.h"
#include "dialogs/ToviTabBaseWnd.h"
#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "document/ToviItemDef.h"
#include "panels/ToviControlValueTable.h"
#include "panels/ToviSpiListCtrl.h"
#include "platform/ToviEnvironment.h"
#include "platform/ToviProfile.h"
#include "platform/widgets/LumImgWnd.h"
#include "settings/ToviPhotoCtrlVisualSetting.h"
#include "tests/support/DeliveryWriter.h"
#include "tests/support/ScriptedUi.h"
#include "tests/support/WorkArea.h"

#include <QBuffer>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QSplitter>
#include <QTabBar>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>
#include <memory>

namespace {

// Remembers the files the dialog asked to open in another application.
class OpeningUi : public ScriptedUi {
public:
    QStringList opened;
    void OpenWithDefaultApplication(const QString& path) override { opened.append(path); }
};

// What the drawing area shows: the SVG view, the notice, a picture, an empty image window.
QString Shown(const ToviPropertyDlg& dialog) {
    if (dialog.SvgView() && dialog.SvgView()->isVisible()) {
        return QStringLiteral("svg");
    }
    if (dialog.Notice()->isVisible()) {
        return dialog.ImageWnd()->isVisible() ? QStringLiteral("both") : QStringLiteral("notice");
    }
    if (dialog.ImageWnd()->isVisible()) {
        return dialog.ImageWnd()->IsEnableImage() ? QStringLiteral("image")
                                                  : QStringLiteral("blank");
    }
    return QStringLiteral("none");
}

bool WriteBytes(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
           file.write(bytes) == bytes.size();
}

QByteArray PngBytes(const QImage& image) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

QImage Solid(const QColor& colour, QSize size = QSize(40, 30)) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    return image;
}

QByteArray SvgOf(const QString& body, const QString& size = QStringLiteral("100"),
                 const QString& prolog = QString()) {
    return (prolog + QStringLiteral("<svg xmlns=\"http://www.w3.org/2000/svg\" "
                                    "xmlns:xlink=\"http://www.w3.org/1999/xlink\" width=\"%1\" "
                                    "height=\"%1\" viewBox=\"0 0 100 100\">%2</svg>")
                         .arg(size, body))
        .toUtf8();
}

// The colour at the middle of what the widget shows.
QColor Middle(QWidget& widget) {
    const QImage shot = widget.grab().toImage();
    return shot.pixelColor(shot.width() / 2, shot.height() / 2);
}

bool IsNear(const QColor& a, const QColor& b) {
    return qAbs(a.red() - b.red()) < 40 && qAbs(a.green() - b.green()) < 40 &&
           qAbs(a.blue() - b.blue()) < 40;
}

// The information list as "title=value" rows.
QStringList Rows(const ToviSpiListCtrl& list) {
    QStringList rows;
    for (int i = 0; i < list.topLevelItemCount(); ++i) {
        rows.append(list.topLevelItem(i)->text(0) + QLatin1Char('=') +
                    list.topLevelItem(i)->text(1));
    }
    return rows;
}

QColor TitleColourOf(const ToviSpiListCtrl& list, const QString& title) {
    for (int i = 0; i < list.topLevelItemCount(); ++i) {
        if (list.topLevelItem(i)->text(0) == title) {
            return list.topLevelItem(i)->foreground(0).color();
        }
    }
    return QColor();
}

void ClickTab(ToviTabBaseWnd& tabs, int index) {
    QTabBar* bar = tabs.TabBar();
    QTest::mouseClick(bar, Qt::LeftButton, {}, bar->tabRect(index).center());
}

}  // namespace

// The property dialog in its tab window, over deliveries written for each case: the drawings
// page and its stepping, SVG drawings, the control values and the information list.
class ToviPropertyDlgTest : public QObject {
    Q_OBJECT

    QTemporaryDir temp;
    NoViews host;
    int serial = 0;

    struct Opened {
        WrittenDelivery written;
        std::unique_ptr<ToviData> data;
        ToviPhoto* Photo(int index) const { return data->GetPhotoActualPhotoArray(index); }
        QString Drawing(int photo, int k) const {
            return written.photoFolder + QStringLiteral("/DRA/") +
                   written.photos[photo].drawings[k];
        }
    };

    // A delivery of its own for a case: 30 small photographs, most with drawings.
    bool Write(Opened& opened) {
        DeliveryOptions options;
        options.photoCount = 30;
        options.images = DeliveryOptions::Images::Tiny;
        options.drawingShare = 0.7;
        options.maxRepeats = 3;
        options.seed = 7;
        QString error;
        const QString root = temp.filePath(QStringLiteral("d%1").arg(++serial));
        return WriteDelivery(root, options, &opened.written, &error);
    }
    bool Open(Opened& opened) {
        ToviEnouDataFactory factory;
        opened.data = factory.Create(&host, opened.written.photoFolder, PhotoXMLMlit);
        if (!opened.data) {
            return false;
        }
        opened.data->Load();
        return true;
    }
    static int Find(const WrittenDelivery& written, int drawings) {
        for (int i = 0; i < written.photos.size(); ++i) {
            if (written.photos[i].drawings.size() == drawings) {
                return i;
            }
        }
        return -1;
    }
    // Names a drawing name.SVG in PHOTO.XML (the name is ASCII, so the bytes can be replaced
    // whatever the file's encoding) and writes that drawing.
    static bool MakeSvgDrawing(Opened& opened, int photo, int k, const QByteArray& svg) {
        QString& name = opened.written.photos[photo].drawings[k];
        const QString svgName = QFileInfo(name).completeBaseName() + QStringLiteral(".SVG");
        const QString xmlPath = opened.written.photoFolder + QStringLiteral("/PHOTO.XML");
        QFile xml(xmlPath);
        if (!xml.open(QIODevice::ReadOnly)) {
            return false;
        }
        QByteArray bytes = xml.readAll();
        xml.close();
        bytes.replace(name.toLatin1(), svgName.toLatin1());
        QFile::remove(opened.Drawing(photo, k));
        name = svgName;
        return WriteBytes(xmlPath, bytes) && WriteBytes(opened.Drawing(photo, k), svg);
    }
    static ToviItemShowSettings Settings(const ToviData& data) {
        return data.GetVisualSetting().GetItemShowSettings();
    }
    static void Show(ToviItemShowSettings& settings, const QString& title, bool on) {
        const int position = settings.Find(title);
        QVERIFY2(position >= 0, qPrintable(title));
        settings[position].Bold(on);
    }
    static void SetControlValue(ToviData& data, ToviPhoto& photo, const QString& text) {
        const int index = data.GetItemDef()->GetIndexFromTitle(ToviPropertyDlg::ControlValueTitle_);
        QVERIFY(index >= 0);
        for (ToviItem& item : photo.GetItems()) {
            if (item.GetDefIndex() == index) {
                item.SetValue(text);
                return;
            }
        }
        photo.GetItems().append(ToviItem(index, text));
    }
    // As the detail panel hands a photograph on: its Exif read first.
    static void SetContent(ToviTabBaseWnd& tabs, ToviData& data, ToviPhoto* photo,
                           const ToviItemShowSettings& settings) {
        if (photo && photo->CheckExif()) {
            photo->LoadExif();
        }
        tabs.SetContent(photo, data.GetItemDef(), settings);
    }
    static void ShowWindow(QWidget& window) {
        window.resize(700, 600);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
    }

private slots:
    void initTestCase() {
        QVERIFY(temp.isValid());
        ToviProfile::Instance().UseFile(temp.filePath(QStringLiteral("profile.ini")));
        UseWorkFolder(temp.path());
        QVERIFY(QDir().mkpath(ToviEnvironment::SuiteFolder()));
    }
    void cleanupTestCase() { ToviEnvironment::SetSettingsPathsForTesting(QString(), QString()); }

    // The drawings page: which drawing shows, the position text, the buttons, and the refusal
    // to step onto a drawing whose file is missing. Steps are clicks on 前へ and 次へ; each is
    // followed by the expected "index:display:position:open" state.
    void drawingSteps_data() {
        QTest::addColumn<int>("drawings");
        QTest::addColumn<QString>("spoil");  // "", "missing" or "unreadable": drawing 2
        QTest::addColumn<QStringList>("steps");

        QTest::newRow("no drawing") << 0 << "" << QStringList{"start 1:blank::0"};
        QTest::newRow("one drawing") << 1 << "" << QStringList{"start 1:image::1"};
        QTest::newRow("three, all there")
            << 3 << ""
            << QStringList{"start 1:image:1/3 枚目を表示:1", "next 2:image:2/3 枚目を表示:1",
                           "next 3:image:3/3 枚目を表示:1", "prev 2:image:2/3 枚目を表示:1",
                           "prev 1:image:1/3 枚目を表示:1"};
        QTest::newRow("three, second missing")
            << 3 << "missing"
            << QStringList{"start 1:image:1/3 枚目を表示:1", "next 1:blank:1/3 枚目を表示:0",
                           "next 1:blank:1/3 枚目を表示:0"};
        QTest::newRow("three, second unreadable")
            << 3 << "unreadable"
            << QStringList{"start 1:image:1/3 枚目を表示:1", "next 2:notice:2/3 枚目を表示:1",
                           "next 3:image:3/3 枚目を表示:1", "prev 2:notice:2/3 枚目を表示:1"};
    }
    void drawingSteps() {
        QFETCH(int, drawings);
        QFETCH(QString, spoil);
        QFETCH(QStringList, steps);
        Opened opened;
        QVERIFY(Write(opened));
        const int photo = Find(opened.written, drawings);
        QVERIFY2(photo >= 0, "the delivery has no photograph with that many drawings");
        if (spoil == QLatin1String("missing")) {
            QVERIFY(QFile::remove(opened.Drawing(photo, 1)));
        } else if (spoil == QLatin1String("unreadable")) {
            QVERIFY(WriteBytes(opened.Drawing(photo, 1), "not a picture at all"));
        }
        QVERIFY(Open(opened));

        ToviTabBaseWnd tabs(&host);
        ShowWindow(tabs);
        SetContent(tabs, *opened.data, opened.Photo(photo), Settings(*opened.data));
        ClickTab(tabs, 1);
        QCOMPARE(tabs.GetSelectedPage(), 1);
        ToviPropertyDlg& dialog = *tabs.GetPropertyDlg();
        QVERIFY(!dialog.Splitter()->isVisible());

        for (const QString& step : steps) {
            const QString action = step.section(QLatin1Char(' '), 0, 0);
            const QStringList expected = step.section(QLatin1Char(' '), 1).split(QLatin1Char(':'));
            if (action == QLatin1String("next")) {
                QVERIFY(dialog.NextButton()->isEnabled());
                QTest::mouseClick(dialog.NextButton(), Qt::LeftButton);
            } else if (action == QLatin1String("prev")) {
                QVERIFY(dialog.PreviousButton()->isEnabled());
                QTest::mouseClick(dialog.PreviousButton(), Qt::LeftButton);
            }
            const int index = expected[0].toInt();
            QCOMPARE(dialog.PictureIndex(), index);
            QCOMPARE(Shown(dialog), expected[1]);
            QCOMPARE(dialog.PositionText()->text(), expected[2]);
            QCOMPARE(dialog.OpenButton()->isEnabled(), expected[3] == QLatin1String("1"));
            const int count = drawings;
            QCOMPARE(dialog.NextButton()->isEnabled(), index < count);
            QCOMPARE(dialog.PreviousButton()->isEnabled(), index > 1);
            // The file name box names the file shown, or nothing when there is none.
            const QString name = expected[3] == QLatin1String("1")
                                     ? opened.written.photos[photo].drawings[index - 1]
                                     : QString();
            QCOMPARE(dialog.FileNameText()->text(), name);
        }
        // The open button hands the drawing shown to the desktop's application for it.
        if (dialog.OpenButton()->isEnabled()) {
            OpeningUi ui;
            ScopedUi scoped(ui);
            QTest::mouseClick(dialog.OpenButton(), Qt::LeftButton);
            QCOMPARE(ui.opened, QStringList{dialog.PicturePath()});
            QCOMPARE(QFileInfo(dialog.PicturePath()).fileName(), dialog.FileNameText()->text());
        }
        for (QWidget* control : {static_cast<QWidget*>(dialog.PreviousButton()),
                                 static_cast<QWidget*>(dialog.PositionText()),
                                 static_cast<QWidget*>(dialog.FileNameText())}) {
            QVERIFY(control->isVisible());
        }
    }

    // A black-and-white drawing is turned grey and drawn smoothed; a colour one is drawn fast.
    void monoDrawing_data() {
        QTest::addColumn<bool>("mono");
        QTest::newRow("black and white") << true;
        QTest::newRow("colour") << false;
    }
    void monoDrawing() {
        QFETCH(bool, mono);
        Opened opened;
        QVERIFY(Write(opened));
        const int photo = Find(opened.written, 1);
        QVERIFY(photo >= 0);
        if (mono) {
            QImage lines(64, 48, QImage::Format_Mono);
            lines.fill(1);
            QVERIFY(WriteBytes(opened.Drawing(photo, 0), PngBytes(lines)));
        }
        QVERIFY(Open(opened));
        ToviTabBaseWnd tabs(&host);
        ShowWindow(tabs);
        SetContent(tabs, *opened.data, opened.Photo(photo), Settings(*opened.data));
        ClickTab(tabs, 1);
        LumImgWnd* window = tabs.GetPropertyDlg()->ImageWnd();
        QVERIFY(window->IsEnableImage());
        QCOMPARE(window->IsDrawFast(), !mono);
        QCOMPARE(window->Image().format() == QImage::Format_Grayscale8, mono);
    }

    // An SVG drawing shows in the SVG view with its page written beside the other work
    // files; one that is not a drawing brings the notice. The tabs hide and show it again.
    void svgDrawing_data() {
        QTest::addColumn<QByteArray>("svg");
        QTest::addColumn<QString>("display");
        QTest::newRow("drawing")
            << SvgOf("<rect x=\"0\" y=\"0\" width=\"100\" height=\"100\" fill=\"#00a000\"/>")
            << "svg";
        QTest::newRow("not a drawing") << QByteArray("<html><body>no</body></html>") << "notice";
        QTest::newRow("cut short")
            << QByteArray("<svg xmlns=\"http://www.w3.org/2000/svg\"><rect") << "notice";
    }
    void svgDrawing() {
        QFETCH(QByteArray, svg);
        QFETCH(QString, display);
        Opened opened;
        QVERIFY(Write(opened));
        const int photo = Find(opened.written, 3);
        QVERIFY(photo >= 0);
        QVERIFY(MakeSvgDrawing(opened, photo, 0, svg));
        QVERIFY(Open(opened));

        ToviTabBaseWnd tabs(&host);
        ShowWindow(tabs);
        SetContent(tabs, *opened.data, opened.Photo(photo), Settings(*opened.data));
        ToviPropertyDlg& dialog = *tabs.GetPropertyDlg();
        QCOMPARE(Shown(dialog), QStringLiteral("none"));  // page 0 is in front
        ClickTab(tabs, 1);
        QCOMPARE(Shown(dialog), display);
        QCOMPARE(dialog.FileNameText()->text(), opened.written.photos[photo].drawings[0]);
        QVERIFY(dialog.OpenButton()->isEnabled());
        const QString html =
            ToviEnvironment::SuiteFolder() + QStringLiteral("QVフォトビューアー/") +
            QFileInfo(dialog.PicturePath()).completeBaseName() + QStringLiteral(".htm");
        QVERIFY(QFileInfo::exists(html));
        if (display == QLatin1String("svg")) {
            QCOMPARE(dialog.SvgView()->geometry(), dialog.ImageWnd()->geometry());
            QVERIFY(IsNear(Middle(*dialog.SvgView()), QColor(0, 160, 0)));
        }

        ClickTab(tabs, 0);
        QCOMPARE(Shown(dialog), QStringLiteral("none"));
        ClickTab(tabs, 1);
        QCOMPARE(Shown(dialog), display);
        // Stepping on to a raster drawing puts the image window back in front.
        QTest::mouseClick(dialog.NextButton(), Qt::LeftButton);
        QCOMPARE(Shown(dialog), QStringLiteral("image"));
        QTest::mouseClick(dialog.PreviousButton(), Qt::LeftButton);
        QCOMPARE(Shown(dialog), display);
    }

    // A new photograph while 参考図 is in front replaces what the last one showed, and clearing
    // leaves both pages empty with every button off.
    void newPhotographOnDrawingsPage() {
        Opened opened;
        QVERIFY(Write(opened));
        const int spoilt = Find(opened.written, 1);
        const int good = Find(opened.written, 3);
        const int none = Find(opened.written, 0);
        QVERIFY(spoilt >= 0 && good >= 0 && none >= 0);
        QVERIFY(WriteBytes(opened.Drawing(spoilt, 0), "garbage"));
        QVERIFY(Open(opened));

        ToviTabBaseWnd tabs(&host);
        ShowWindow(tabs);
        ToviPropertyDlg& dialog = *tabs.GetPropertyDlg();
        const ToviItemShowSettings settings = Settings(*opened.data);
        SetContent(tabs, *opened.data, opened.Photo(spoilt), settings);
        ClickTab(tabs, 1);
        QCOMPARE(Shown(dialog), QStringLiteral("notice"));
        QVERIFY(dialog.OpenButton()->isEnabled());
        SetContent(tabs, *opened.data, opened.Photo(good), settings);
        QCOMPARE(Shown(dialog), QStringLiteral("image"));
        QCOMPARE(dialog.PositionText()->text(), QStringLiteral("1/3 枚目を表示"));
        SetContent(tabs, *opened.data, opened.Photo(spoilt), settings);
        QCOMPARE(Shown(dialog), QStringLiteral("notice"));
        SetContent(tabs, *opened.data, opened.Photo(none), settings);
        QCOMPARE(Shown(dialog), QStringLiteral("blank"));
        QVERIFY(!dialog.OpenButton()->isEnabled());

        SetContent(tabs, *opened.data, opened.Photo(good), settings);
        tabs.ClearContent();
        QCOMPARE(Shown(dialog), QStringLiteral("blank"));
        for (QPushButton* button :
             {dialog.PreviousButton(), dialog.NextButton(), dialog.OpenButton()}) {
            QVERIFY(!button->isEnabled());
        }
        QVERIFY(dialog.PositionText()->text().isEmpty());
        QVERIFY(dialog.FileNameText()->text().isEmpty());
        ClickTab(tabs, 0);
        QCOMPARE(dialog.ItemList()->topLevelItemCount(), 0);
        QCOMPARE(dialog.ControlTable()->RowCount(), 0);
        QVERIFY(dialog.ControlText()->toPlainText().isEmpty());
    }

    // The lower pane: shown by the show setting of 施工管理値, the table when the text parses,
    // the text as it stands when it does not; switched off, the list takes the whole page.
    void controlValues_data() {
        QTest::addColumn<bool>("shown");
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("rows");  // -1: the text box is shown instead

        QTest::newRow("two values")
            << true << "幅:設計値 500・実測値 505・差 +5、高さ:設計値 300・実測値 298・差 -2" << 2;
        QTest::newRow("cannot be read") << true << "測定は後日" << -1;
        QTest::newRow("full-width colon") << true << "幅：設計値 500・実測値 505・差 +5" << -1;
        QTest::newRow("one part of two unreadable")
            << true << "幅:設計値 500・実測値 505・差 +5、高さ:300・298" << -1;
        QTest::newRow("two bare names") << true << "幅、高さ" << 2;
        QTest::newRow("switched off") << false << "幅:設計値 500・実測値 505・差 +5" << 1;
    }
    void controlValues() {
        QFETCH(bool, shown);
        QFETCH(QString, text);
        QFETCH(int, rows);
        Opened opened;
        QVERIFY(Write(opened));
        QVERIFY(Open(opened));
        ToviPhoto* photo = opened.Photo(0);
        SetControlValue(*opened.data, *photo, text);
        ToviItemShowSettings settings = Settings(*opened.data);
        Show(settings, ToviPropertyDlg::ControlValueTitle_, true);

        ToviTabBaseWnd tabs(&host);
        ShowWindow(tabs);
        ToviPropertyDlg& dialog = *tabs.GetPropertyDlg();
        SetContent(tabs, *opened.data, photo, settings);
        QVERIFY(dialog.BottomPane()->isVisible());
        const QList<int> sizes = dialog.Splitter()->sizes();
        QCOMPARE(sizes.value(0), ToviPropertyDlg::kFirstSplitterPosition);
        if (!shown) {
            // The change of settings on the same photograph takes the pane away.
            Show(settings, ToviPropertyDlg::ControlValueTitle_, false);
            SetContent(tabs, *opened.data, photo, settings);
        }
        QCOMPARE(dialog.BottomPane()->isVisible(), shown);
        QCOMPARE(dialog.IsShowControlValues(), shown);
        QCOMPARE(dialog.ControlText()->toPlainText(), text);
        if (!shown) {
            QTRY_COMPARE(dialog.ItemList()->parentWidget()->height(), dialog.Splitter()->height());
            return;
        }
        QCOMPARE(dialog.ControlTable()->RowCount(), std::max(rows, 0));
        QCOMPARE(dialog.ControlTable()->isVisible(), rows > 0);
        QCOMPARE(dialog.ControlText()->isVisible(), rows < 0);
        // Through the other page and back, the same one of the two is in front.
        ClickTab(tabs, 1);
        QVERIFY(!dialog.BottomPane()->isVisible());
        ClickTab(tabs, 0);
        QCOMPARE(dialog.ControlTable()->isVisible(), rows > 0);
        QCOMPARE(dialog.ControlText()->isVisible(), rows < 0);
    }

    // The list holds the photograph's shown items, coloured by what they are, and the file and
    // Exif facts when the show settings ask for them; it is made anew for each photograph.
    void itemList_data() {
        QTest::addColumn<bool>("facts");
        QTest::newRow("items only") << false;
        QTest::newRow("with file and Exif facts") << true;
    }
    void itemList() {
        QFETCH(bool, facts);
        Opened opened;
        QVERIFY(Write(opened));
        QVERIFY(Open(opened));
        const WrittenPhoto& written = opened.written.photos[0];
        QVERIFY(written.exif.writeExif);
        ToviItemShowSettings settings = Settings(*opened.data);
        for (const QString& title :
             {QStringLiteral("画像入力機器のメーカー名"), QStringLiteral("画像入力機器のモデル名"),
              QStringLiteral("幅×高さ")}) {
            Show(settings, title, facts);
        }

        ToviTabBaseWnd tabs(&host);
        ShowWindow(tabs);
        ToviPropertyDlg& dialog = *tabs.GetPropertyDlg();
        SetContent(tabs, *opened.data, opened.Photo(0), settings);
        const ToviSpiListCtrl& list = *dialog.ItemList();
        const QStringList rows = Rows(list);
        QString title;
        for (const auto& [tag, text] : written.elements) {
            if (tag == QStringLiteral("写真タイトル")) {
                title = text;
            }
        }
        QVERIFY2(rows.contains(QStringLiteral("写真タイトル=") + title),
                 qPrintable(title + QLatin1Char('#') + rows.join(QLatin1Char('|'))));
        QCOMPARE(TitleColourOf(list, QStringLiteral("写真タイトル")), QColor(255, 0, 0));
        QCOMPARE(rows.contains(QStringLiteral("画像入力機器のメーカー名=") + written.exif.make),
                 facts);
        QCOMPARE(rows.contains(QStringLiteral("画像入力機器のモデル名=") + written.exif.model),
                 facts);
        QCOMPARE(rows.filter(QRegularExpression(QStringLiteral("^幅×高さ=\\d+×\\d+$"))).size(),
                 facts ? 1 : 0);
        if (facts) {
            QCOMPARE(TitleColourOf(list, QStringLiteral("画像入力機器のメーカー名")),
                     QColor(160, 82, 45));
            QCOMPARE(TitleColourOf(list, QStringLiteral("幅×高さ")), QColor(0, 128, 0));
        }
        QVERIFY(!rows.filter(QRegularExpression(QStringLiteral("^施工管理値="))).size());

        // The next photograph's list has none of the first one's rows.
        QString nextTitle;
        for (const auto& [tag, text] : opened.written.photos[1].elements) {
            if (tag == QStringLiteral("写真タイトル")) {
                nextTitle = text;
            }
        }
        SetContent(tabs, *opened.data, opened.Photo(1), settings);
        const QStringList next = Rows(*dialog.ItemList());
        QCOMPARE(next.filter(QRegularExpression(QStringLiteral("^写真タイトル="))),
                 QStringList{QStringLiteral("写真タイトル=") + nextTitle});
        QVERIFY(dialog.ItemList()->isVisible());
        QCOMPARE(dialog.findChildren<ToviSpiListCtrl*>().size(), 1);
    }

    // Tabs by click and by call; Enter and Esc do not reach a dialog that holds the window.
    void tabsAndKeys() {
        QDialog holder;
        auto* tabs = new ToviTabBaseWnd(&host, &holder);
        auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, &holder);
        buttons->setGeometry(0, 560, 200, 30);
        buttons->button(QDialogButtonBox::Ok)->setDefault(true);
        connect(buttons, &QDialogButtonBox::accepted, &holder, &QDialog::accept);
        tabs->setGeometry(0, 0, 700, 550);
        holder.resize(700, 600);
        holder.show();
        QVERIFY(QTest::qWaitForWindowExposed(&holder));
        QSignalSpy accepted(&holder, &QDialog::accepted);
        QSignalSpy rejected(&holder, &QDialog::rejected);

        ToviPropertyDlg& dialog = *tabs->GetPropertyDlg();
        QCOMPARE(tabs->GetSelectedPage(), 0);
        QCOMPARE(dialog.Page(), 0);
        QVERIFY(dialog.Splitter()->isVisible());
        QVERIFY(!dialog.NextButton()->isVisible());

        dialog.ItemList()->setFocus();
        QTest::keyClick(dialog.ItemList(), Qt::Key_Escape);
        QTest::keyClick(dialog.ItemList(), Qt::Key_Return);
        QCOMPARE(rejected.count(), 0);
        QCOMPARE(accepted.count(), 0);
        ClickTab(*tabs, 1);
        QCOMPARE(dialog.Page(), 1);
        QVERIFY(!dialog.Splitter()->isVisible());
        QVERIFY(dialog.NextButton()->isVisible());
        QTest::keyClick(dialog.FileNameText(), Qt::Key_Enter);
        QTest::keyClick(dialog.FileNameText(), Qt::Key_Escape);
        QVERIFY(holder.isVisible());
        QCOMPARE(accepted.count(), 0);
        QCOMPARE(rejected.count(), 0);

        tabs->SetSelectedPage(0);
        QCOMPARE(tabs->GetSelectedPage(), 0);
        QVERIFY(dialog.Splitter()->isVisible());
        QVERIFY(!dialog.FileNameText()->isVisible());
        // The dialog fills the tabs' display area.
        const QRect area(dialog.mapTo(tabs, QPoint(0, 0)), dialog.size());
        QVERIFY(area.top() >= tabs->TabBar()->height());
        QVERIFY(area.width() > 650 && area.height() > 450);
    }

    // The SVG view draws what the file holds and nothing else: pictures linked from other
    // files are left out, pictures carried inside are drawn, and a drawing claiming a huge
    // size is drawn at the window's size.
    void svgViewOwnContent_data() {
        QTest::addColumn<QByteArray>("svg");
        QTest::addColumn<QColor>("middle");

        const QString redPath = temp.filePath(QStringLiteral("outside/red.png"));
        QDir().mkpath(QFileInfo(redPath).path());
        QVERIFY(WriteBytes(redPath, PngBytes(Solid(Qt::red))));
        const QString red = QStringLiteral(
            "<image x=\"0\" y=\"0\" width=\"100\" height=\"100\" xlink:href=\"%1\"/>");
        QTest::newRow("absolute path") << SvgOf(red.arg(redPath)) << QColor(Qt::white);
        QTest::newRow("beside the drawing")
            << SvgOf(red.arg(QStringLiteral("red.png"))) << QColor(Qt::white);
        const QString carried = QStringLiteral("data:image/png;base64,") +
                                QString::fromLatin1(PngBytes(Solid(Qt::blue)).toBase64());
        QTest::newRow("carried inside") << SvgOf(red.arg(carried)) << QColor(Qt::blue);
        QTest::newRow("huge size")
            << SvgOf("<rect x=\"0\" y=\"0\" width=\"100\" height=\"100\" fill=\"#0000ff\"/>",
                     QStringLiteral("100000000"))
            << QColor(Qt::blue);
        QTest::newRow("local use")
            << SvgOf(
                   "<defs><rect id=\"r\" width=\"100\" height=\"100\" fill=\"#0000ff\"/></defs>"
                   "<use xlink:href=\"#r\"/>")
            << QColor(Qt::blue);
    }
    void svgViewOwnContent() {
        QFETCH(QByteArray, svg);
        QFETCH(QColor, middle);
        // The drawing lies beside red.png, so that a relative link would find it.
        const QString path = temp.filePath(QStringLiteral("outside/drawing.svg"));
        QVERIFY(WriteBytes(path, svg));
        ToviSvgView view;
        view.resize(200, 150);
        QVERIFY(view.Load(path));
        QCOMPARE(view.Path(), path);
        QVERIFY2(IsNear(Middle(view), middle), qPrintable(Middle(view).name()));
    }

    // Files the view refuses, leaving the window blank.
    void svgViewRefuses_data() {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("empty") << QByteArray("");
        QTest::newRow("another root") << QByteArray("<html xmlns=\"http://www.w3.org/2000/svg\"/>");
        QTest::newRow("unclosed") << QByteArray("<svg xmlns=\"http://www.w3.org/2000/svg\"><g>");
        QByteArray laughs = "<?xml version=\"1.0\"?><!DOCTYPE svg [<!ENTITY a \"aaaaaaaaaa\">";
        for (char level = 'b'; level <= 'j'; ++level) {
            laughs += QByteArray("<!ENTITY ") + level + " \"" + QByteArray("&") + char(level - 1) +
                      ";" + QByteArray("&") + char(level - 1) + ";" + QByteArray("&") +
                      char(level - 1) + ";" + QByteArray("&") + char(level - 1) + ";\">";
        }
        laughs += "]><svg xmlns=\"http://www.w3.org/2000/svg\"><text>&j;</text></svg>";
        QTest::newRow("entity expansion") << laughs;
    }
    void svgViewRefuses() {
        QFETCH(QByteArray, content);
        const QString path = temp.filePath(QStringLiteral("refused.svg"));
        QFile::remove(path);
        if (!content.isNull()) {
            QVERIFY(WriteBytes(path, content));
        }
        ToviSvgView view;
        view.resize(100, 100);
        QVERIFY(view.Load(path) == false);
        QVERIFY(!view.IsLoaded());
        QVERIFY(view.Path().isEmpty());
        QCOMPARE(Middle(view), QColor(Qt::white));
    }
};

QTEST_MAIN(ToviPropertyDlgTest)
#include "ToviPropertyDlgTest.moc"

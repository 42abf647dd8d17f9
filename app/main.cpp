// tovi-viewer: the viewer for electronic deliveries.
//
//   tovi-viewer [DIR] [--family N] [--record FILE] [--screenshot FILE.png] [--size WxH]
//               [--profile FILE]

#include "app/ToviMainWindow.h"
#include "dialogs/ToviConfirmDlg.h"
#include "dialogs/ToviMultiDlg.h"
#include "dialogs/ToviQtUi.h"
#include "document/ToviData.h"
#include "panels/ToviMpiPanel.h"
#include "platform/ToviProfile.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QTimer>

#include <cstdio>

namespace {

void PrintError(const QString& line) {
    const QByteArray utf8 = line.toUtf8() + '\n';
    std::fwrite(utf8.constData(), 1, static_cast<size_t>(utf8.size()), stderr);
}

// The presenter while taking a picture unattended: a message is printed rather than shown
// (no one is there to close it), and every question and dialog gets its safe answer.
class ToviUnattendedUi : public ToviQtUi {
public:
    int MessageBox(QWidget* parent, const QString& text, const QString& caption, Buttons buttons,
                   Icon icon) override {
        PrintError(text);
        return ToviNonInteractiveUi().MessageBox(parent, text, caption, buttons, icon);
    }
    bool RunDialog(QWidget*, const QString&, QVariantMap&) override { return false; }
    bool BrowseForFolder(QWidget*, const QString&, QString&) override { return false; }
    QString GetSaveFileName(QWidget*, const QString&, const QString&, const QString&) override {
        return QString();
    }
    QString GetOpenFileName(QWidget*, const QString&, const QString&, const QString&) override {
        return QString();
    }
};

// Waits for the first page's thumbnails and then for its whole pictures, writes the window's
// picture and quits with 0, or 1 when it could not be written. A page that has not settled within a
// minute is taken as it is.
void TakeScreenshot(ToviMainWindow& window, const QString& path) {
    static bool taken = false;
    auto write = [&window, path] {
        if (taken) {
            return;
        }
        taken = true;
        const bool saved = window.grab().save(path);
        if (!saved) {
            PrintError(QStringLiteral("tovi-viewer: 画像 %1 を書き込めません")
                           .arg(QDir::toNativeSeparators(path)));
        }
        QCoreApplication::exit(saved ? 0 : 1);
    };
    auto poll = new QTimer(&window);
    poll->setInterval(20);
    QObject::connect(poll, &QTimer::timeout, &window, [&window, write] {
        if (window.MpiPanel()->IsPageShown() && window.MpiPanel()->IsPageComplete()) {
            write();
        }
    });
    poll->start();
    QTimer::singleShot(60000, &window, write);
}

}  // namespace

int main(int argc, char* argv[]) {
    QCoreApplication::setOrganizationName(QStringLiteral("Orvane Systems"));
    QCoreApplication::setApplicationName(QStringLiteral("tovi-viewer"));
    QCoreApplication::setApplicationVersion(QStringLiteral("0.1"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("電子納品の写真を閲覧・検査します。"));
    const QCommandLineOption helpOption = parser.addHelpOption();
    const QCommandLineOption versionOption = parser.addVersionOption();
    parser.addPositionalArgument(
        QStringLiteral("DIR"),
        QStringLiteral("開く電子納品のフォルダ（PHOTO.XML のあるフォルダ、またはその上）"),
        QStringLiteral("[DIR]"));
    const QCommandLineOption familyOption(
        QStringLiteral("family"),
        QStringLiteral("発注者区分: 0 国土交通省, 1 港湾空港, 2 農林水産省, 3 NEXCO"),
        QStringLiteral("N"));
    const QCommandLineOption recordOption(QStringLiteral("record"),
                                          QStringLiteral("開いた後に読み込む検査状況ファイル"),
                                          QStringLiteral("FILE"));
    const QCommandLineOption screenshotOption(
        QStringLiteral("screenshot"),
        QStringLiteral("最初のページが表示されたらウィンドウの画像を書き出して終了する"),
        QStringLiteral("FILE.png"));
    const QCommandLineOption sizeOption(QStringLiteral("size"),
                                        QStringLiteral("ウィンドウの大きさ（例 1366x768）"),
                                        QStringLiteral("WxH"));
    const QCommandLineOption profileOption(QStringLiteral("profile"),
                                           QStringLiteral("設定を読み書きするファイル（INI 形式）"),
                                           QStringLiteral("FILE"));
    parser.addOptions({familyOption, recordOption, screenshotOption, sizeOption, profileOption});

    // Help and version need no display: they are answered before the GUI application is made,
    // which ends the program where no window system can be reached. A command line the parser
    // does not take (the window system's own options among others) goes the usual way.
    QStringList arguments;
    for (int i = 0; i < argc; ++i) {
        arguments.append(QString::fromLocal8Bit(argv[i]));
    }
    if (parser.parse(arguments) &&
        (parser.isSet(helpOption) || parser.isSet(QStringLiteral("help-all")) ||
         parser.isSet(versionOption))) {
        QCoreApplication core(argc, argv);
        parser.process(core);  // prints and exits
    }

    QApplication app(argc, argv);
    QApplication::setApplicationDisplayName(QStringLiteral("ToviCore"));
    ToviQtUi::InstallTranslations(&app);
    parser.process(app);
    if (parser.isSet(profileOption)) {
        ToviProfile::Instance().UseFile(parser.value(profileOption));
    }

    int family = -1;
    if (parser.isSet(familyOption)) {
        bool ok = false;
        family = parser.value(familyOption).toInt(&ok);
        if (!ok || family < 0 || family > 3) {
            PrintError(
                QStringLiteral("tovi-viewer: --family には 0 から 3 の数を指定してください"));
            return 2;
        }
    }
    QSize size;
    if (parser.isSet(sizeOption)) {
        const QStringList parts = parser.value(sizeOption).split(QLatin1Char('x'));
        const int w = parts.value(0).toInt();
        const int h = parts.size() == 2 ? parts[1].toInt() : 0;
        if (w < 320 || h < 240) {
            PrintError(QStringLiteral("tovi-viewer: --size は 1366x768 のように指定してください"));
            return 2;
        }
        size = QSize(w, h);
    }
    const QStringList folders = parser.positionalArguments();
    if (folders.size() > 1) {
        PrintError(QStringLiteral("tovi-viewer: 開けるフォルダは一つです"));
        return 2;
    }
    const bool unattended = parser.isSet(screenshotOption);
    if (parser.isSet(recordOption) && folders.isEmpty()) {
        PrintError(
            QStringLiteral("tovi-viewer: --record には電子納品のフォルダも指定してください"));
        return 2;
    }

    std::unique_ptr<ToviQtUi> ui =
        unattended ? std::make_unique<ToviUnattendedUi>() : std::make_unique<ToviQtUi>();
    ToviUi::Install(ui.get());
    ToviPanelWindows windows;
    windows.createConfirm = [](ToviMpiPanel* owner) { return new ToviConfirmDlg(owner); };
    windows.createZoom = &ToviMultiDlg::Make;
    SetPanelWindows(windows);
    int code = 0;
    {
        ToviMainWindow window;
        if (size.isValid()) {
            window.resize(size);
        }
        window.show();
        QTimer::singleShot(0, &window, [&] {
            if (!folders.isEmpty()) {
                const PhotoXMLType type =
                    family >= 0 ? static_cast<PhotoXMLType>(family) : window.Family();
                if (window.OpenDelivery(folders[0], type) && parser.isSet(recordOption)) {
                    window.LoadRecord(parser.value(recordOption));
                }
            }
            if (unattended) {
                TakeScreenshot(window, parser.value(screenshotOption));
            }
        });
        code = QApplication::exec();
    }
    SetPanelWindows({});
    ToviUi::Install(nullptr);
    return code;
}

#include "dialogs/ToviIndexPageDlg.h"

#include "document/ToviData.h"
#include "platform/ToviProfile.h"
#include "platform/ToviUi.h"
#include "reports/ToviIndexPage.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace {

const QString kSection = QStringLiteral("IndexPage");

}  // namespace

ToviIndexPageDlg::ToviIndexPageDlg(QWidget* parent) : QDialog(parent) {
    setWindowTitle(QStringLiteral("工事管理ファイル"));
    setObjectName(QStringLiteral("ToviIndexPageDlg"));
    browser = new QTextBrowser(this);
    browser->setObjectName(QStringLiteral("indexPage"));
    // The page is the delivery's: its links lead nowhere from here.
    browser->setOpenLinks(false);
    browser->setOpenExternalLinks(false);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    buttons->button(QDialogButtonBox::Close)->setText(QStringLiteral("閉じる"));
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(browser, 1);
    layout->addWidget(buttons);

    ToviProfile& profile = ToviProfile::Instance();
    const QSize available = QGuiApplication::primaryScreen()
                                ? QGuiApplication::primaryScreen()->availableSize()
                                : QSize(1366, 768);
    const int w = profile.GetProfileInt(kSection, QStringLiteral("Width"), 0) - 100;
    const int h = profile.GetProfileInt(kSection, QStringLiteral("Height"), 0) - 100;
    resize(w > 200 && h > 150 ? QSize(w, h)
                              : QSize(std::min(900, available.width() - 80),
                                      std::min(680, available.height() - 80)));
}

bool ToviIndexPageDlg::SetData(ToviData* data) {
    if (!data) {
        return false;
    }
    ToviIndexPage page;
    const ToviIndexPage::Result result = page.Make(*data);
    if (result != ToviIndexPage::Made) {
        ToviUi::Instance().MessageBox(parentWidget(), page.Message(result) + QStringLiteral("。"),
                                      QString(), ToviUi::ButtonsOk, ToviUi::IconInformation);
        return false;
    }
    setWindowTitle(
        QStringLiteral("工事管理ファイル - %1").arg(QDir::toNativeSeparators(page.IndexPath())));
    browser->setHtml(QString::fromUtf8(page.Html()));
    return true;
}

void ToviIndexPageDlg::done(int result) {
    ToviProfile& profile = ToviProfile::Instance();
    profile.WriteProfileInt(kSection, QStringLiteral("Width"), width() + 100);
    profile.WriteProfileInt(kSection, QStringLiteral("Height"), height() + 100);
    QDialog::done(result);
}

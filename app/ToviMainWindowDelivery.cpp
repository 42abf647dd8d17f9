// Opening and closing a delivery, and the commands on the open one: the inspection record,
// the check report, the export of the photographs and the index file's page.

#include "app/ToviMainWindow.h"

#include "dialogs/ToviIndexPageDlg.h"
#include "document/ToviData.h"
#include "panels/ToviLabelTreePanel.h"
#include "panels/ToviSlideMode.h"
#include "platform/ToviProfile.h"
#include "platform/ToviUi.h"
#include "reports/ToviCheckStatusFileOut.h"
#include "reports/ToviPhotoExport.h"
#include "review/ToviLabelManager.h"
#include "review/ToviXmlManager.h"

#include <QActionGroup>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QStatusBar>
#include <QTabWidget>

namespace {

QString RecordFilter() {
    return QStringLiteral("検査状況ファイル (*.xml);;すべてのファイル (*)");
}

}  // namespace

// ---- opening and closing -------------------------------------------------------------------

bool ToviMainWindow::OpenDelivery(const QString& folder, PhotoXMLType type) {
    if (!ConfirmDiscard()) {
        return false;
    }
    const ToviViewerDocument::OpenResult result = document->Open(folder, type, this);
    if (result != ToviViewerDocument::Opened) {
        UpdateActions();
        return false;
    }
    // The delivery may have been recognised under another client than the one asked for.
    family = document->Family();
    recordPath.clear();
    AddRecent(folder);
    // A label tree shown at the start makes its label the current set.
    if (treeTabs->currentIndex() != 0) {
        labelTree->OnPostVisible();
    }
    shownTab = treeTabs->currentIndex();
    UpdateActions();
    // The title names the folder; the status bar says only what the user did not choose.
    if (family != type) {
        statusBar()->showMessage(QStringLiteral("発注者区分「%1」の電子納品として開きました")
                                     .arg(PlainText(familyGroup->actions().value(family))),
                                 10000);
    }
    return true;
}

void ToviMainWindow::OnOpen() {
    QString folder =
        document->IsOpen() ? QFileInfo(document->Folder()).absolutePath() : recent.value(0);
    if (folder.isEmpty()) {
        folder = QStandardPaths::writableLocation(QStandardPaths::HomeLocation);
    }
    if (ToviUi::Instance().BrowseForFolder(
            this,
            QStringLiteral("電子納品のフォルダ（PHOTO.XML のあるフォルダ）を選択してください"),
            folder)) {
        OpenDelivery(folder, family);
    }
}

bool ToviMainWindow::ConfirmDiscard() {
    ToviData* data = document->Data();
    if (!data || !data->IsCheckStatusChanged()) {
        return true;
    }
    const int answer = ToviUi::Instance().MessageBox(
        this, QStringLiteral("付箋またはコメントが変更されています。\n検査状況を保存しますか？"),
        QString(), ToviUi::ButtonsYesNoCancel, ToviUi::IconQuestion);
    if (answer == ToviUi::AnswerYes) {
        return SaveRecord();
    }
    return answer == ToviUi::AnswerNo;
}

void ToviMainWindow::closeEvent(QCloseEvent* event) {
    if (slideShow) {
        StopSlideShow();
    }
    if (!ConfirmDiscard()) {
        event->ignore();
        return;
    }
    SaveFrameSettings();
    document->Close(this);
    if (!ToviProfile::Instance().Flush()) {
        ToviUi::Instance().MessageBox(
            this,
            QStringLiteral("設定を保存できませんでした。\n（%1）")
                .arg(QDir::toNativeSeparators(ToviProfile::Instance().FileName())),
            QString(), ToviUi::ButtonsOk, ToviUi::IconWarning);
    }
    event->accept();
}

// ---- the record, the report, the export -----------------------------------------------------

bool ToviMainWindow::SaveRecord() {
    ToviData* data = document->Data();
    if (!data) {
        return false;
    }
    const QString proposed = recordPath.isEmpty()
                                 ? QDir(QFileInfo(document->Folder()).absolutePath())
                                       .filePath(QStringLiteral("検査状況.xml"))
                                 : recordPath;
    const QString path = ToviUi::Instance().GetSaveFileName(this, QStringLiteral("検査状況の保存"),
                                                            proposed, RecordFilter());
    if (path.isEmpty()) {
        return false;
    }
    int result = -1;
    if (!data->SaveExamination(path, QString(), &result)) {
        ToviUi::Instance().MessageBox(
            this, ToviExamResultText(result) + QStringLiteral("。"), QString(), ToviUi::ButtonsOk,
            result == ExamCancelled ? ToviUi::IconInformation : ToviUi::IconWarning);
        return false;
    }
    recordPath = path;
    statusBar()->showMessage(
        QStringLiteral("検査状況を保存しました: %1").arg(QDir::toNativeSeparators(path)), 5000);
    return true;
}

bool ToviMainWindow::SaveRecordWithPaths() {
    ToviData* data = document->Data();
    if (!data) {
        return false;
    }
    const QString proposed = QDir(QFileInfo(document->Folder()).absolutePath())
                                 .filePath(QStringLiteral("検査状況_写真パス付き.xml"));
    const QString path = ToviUi::Instance().GetSaveFileName(
        this, QStringLiteral("写真パス付き検査状況の保存"), proposed, RecordFilter());
    if (path.isEmpty()) {
        return false;
    }
    // Unlike the record itself, this copy leaves the question of unsaved work as it was.
    int result = -1;
    if (!data->ReturnExam(path, &result)) {
        ToviUi::Instance().MessageBox(
            this, ToviExamResultText(result) + QStringLiteral("。"), QString(), ToviUi::ButtonsOk,
            result == ExamCancelled ? ToviUi::IconInformation : ToviUi::IconWarning);
        return false;
    }
    statusBar()->showMessage(QStringLiteral("写真パス付きの検査状況を保存しました: %1")
                                 .arg(QDir::toNativeSeparators(path)),
                             5000);
    return true;
}

bool ToviMainWindow::ShowIndexPage() {
    ToviData* data = document->Data();
    if (!data) {
        return false;
    }
    auto* dialog = new ToviIndexPageDlg(this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    if (!dialog->SetData(data)) {
        delete dialog;
        return false;
    }
    // Closed with the delivery it shows.
    connect(document, &ToviViewerDocument::DeliveryClosed, dialog, &QDialog::reject);
    dialog->show();
    return true;
}

bool ToviMainWindow::LoadRecord(const QString& given) {
    ToviData* data = document->Data();
    if (!data) {
        return false;
    }
    QString path = given;
    if (path.isEmpty()) {
        if (!ConfirmDiscard()) {
            return false;
        }
        path = ToviUi::Instance().GetOpenFileName(
            this, QStringLiteral("検査状況の読み込み"),
            recordPath.isEmpty() ? QFileInfo(document->Folder()).absolutePath() : recordPath,
            RecordFilter());
        if (path.isEmpty()) {
            return false;
        }
    }
    int result = -1;
    if (!data->LoadExamination(path, &result)) {
        ToviUi::Instance().MessageBox(
            this,
            QStringLiteral("%1。\n（%2）")
                .arg(ToviExamResultText(result), QDir::toNativeSeparators(path)),
            QString(), ToviUi::ButtonsOk, ToviUi::IconWarning);
        return false;
    }
    // What is shown is now what the record holds.
    data->UpdateHasComment();
    data->SetCheckStatusChanged(false);
    document->UpdateAllViews(nullptr, ToviData::HintLabelsChanged, nullptr);
    recordPath = path;
    statusBar()->showMessage(
        QStringLiteral("検査状況を読み込みました: %1").arg(QDir::toNativeSeparators(path)), 5000);
    return true;
}

void ToviMainWindow::OnCheckReport() {
    if (ToviData* data = document->Data()) {
        ToviCheckStatusFileOut(*data, *data->GetLabelManager())
            .FileOut(QStringLiteral("検査状況表の出力"));
    }
}

void ToviMainWindow::OnExport() {
    if (ToviData* data = document->Data()) {
        ToviPhotoExport(*data, this).OutputPhotos(IsSlideMode());
    }
}

#pragma once

#include "extraction/ToviExtractionConditions.h"

#include <QColor>
#include <QDialog>

class QCheckBox;
class QPushButton;
class ToviData;

// 抽出: the small window, docked by the host, in which the inspector sets the conditions of an
// extraction and switches it on and off. The document reads the conditions from here; the
// management item and date conditions and the choice of AND or OR are set in the modal
// ToviExtDetailDlg. The window has no caption, and Enter and Escape never close it.
class ToviExtractionDlg : public QDialog, public ToviExtractionSource {
    Q_OBJECT
public:
    // The background of the window and of its checks, 0xF0E7D9 as 0x00BBGGRR.
    static const QColor Background_;
    static const QString ExecuteText_;  // "抽出実行"
    static const QString RunningText_;  // "抽出実行中"
    static const QString NothingFoundText_;  // "この条件で抽出される写真は1枚もありませんでした。"

    explicit ToviExtractionDlg(QWidget* parent = nullptr);
    ~ToviExtractionDlg() override;

    // Ignores null; otherwise keeps the document (not owned) and makes this window its source
    // of conditions.
    void SetData(ToviData* document);
    ToviData* GetData() const { return data; }
    // Lets the document go before it is deleted: it no longer reads this window, the conditions
    // are reset and the controls disabled until the next SetData.
    void ReleaseData();
    // Resets every condition and shows them; 代表写真 is offered only for deliveries that have
    // the item, and saving only when photographs are shown.
    void initialize();
    const ToviExtractionConditions& Conditions() const override { return conditions; }
    // Extraction was stopped elsewhere: the button comes up again. With CancelAndReset the
    // document forgets this window, the conditions are reset and 抽出実行 is disabled.
    void CancelExtraction(CancelExt value) override;
    // Enables or disables 詳細設定..., 抽出実行 and the five checks together.
    void EnableExtractCtrl(bool enable);
    // 表示写真を保存 is enabled while the current array isn't empty.
    void UpdateOutputAllPhotoButton();
    // After a change of the conditions: with none left on, extraction stops and 抽出実行 is
    // disabled; otherwise a running extraction runs afresh at once.
    void CheckExecutionEnable();
    bool IsRunning() const { return running; }

    QCheckBox* KeyPhotoCheck() const { return keyPhotoCheck; }
    QPushButton* ExecuteButton() const { return executeButton; }
    QPushButton* DetailsButton() const { return detailsButton; }
    QPushButton* OutputButton() const { return outputButton; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void OnBnClickedExecute();
    void OnBnClickedDetails();
    void OnBnClickedOutputAllPhoto();
    // Copies the checks into the conditions (true) or the conditions into the checks (false).
    void UpdateData(bool save);
    void SetRunning(bool on);
    bool HasCurrentPhotos() const;

    QCheckBox* keyPhotoCheck;
    QCheckBox* ngPhotoCheck;
    QCheckBox* notcheckPhotoCheck;
    QCheckBox* notExifinfoCheck;
    QCheckBox* neceNotwriteCheck;
    QPushButton* detailsButton;
    QPushButton* executeButton;
    QPushButton* outputButton;
    ToviExtractionConditions conditions;
    ToviData* data = nullptr;
    bool running = false;
};

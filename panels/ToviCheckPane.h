#pragma once

#include "checks/ToviCheckFinding.h"
#include "panels/ToviPanel.h"

#include <QTimer>

#include <array>
#include <memory>
#include <thread>
#include <vector>

class QCheckBox;
class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QTableView;
class ToviFindingsFilter;
class ToviFindingsModel;

// The findings of the delivery checks of the open delivery: the severities to show with their
// counts, the code to show, the run's progress with its cancel, and the table. A run reads
// the document on a thread of its own; its findings are taken over in batches a few times a
// second. A run never outlives the document: letting the document go cancels the run and
// waits for its thread first.
class ToviCheckPane : public ToviPanel {
    Q_OBJECT
public:
    enum State { Idle, Running, Done, Cancelled, Failed };
    // How often the findings found meanwhile are taken over while a run goes on.
    static constexpr int kPollMs = 100;
    // At most this many findings join the table on one poll, so that no poll holds up the
    // window; the rest follow on the next.
    static constexpr size_t kRowsPerPoll = 5000;

    explicit ToviCheckPane(QWidget* parent = nullptr);
    ~ToviCheckPane() override;

    // Starts the checks of the document held (a running one is cancelled first and its
    // findings dropped); false without a document.
    bool Start();
    // Stops a run; the findings found so far stay. Returns once its thread has ended.
    void Cancel();
    State GetState() const { return state; }
    bool IsRunning() const { return state == Running; }
    // Photographs checked so far, of how many.
    qint64 PhotosDone() const { return done; }
    qint64 PhotosTotal() const { return total; }
    int Count(ToviCheckFinding::Severity severity) const;
    // "エラー n / 警告 n / 注意 n".
    QString CountText() const;

    ToviFindingsModel* Model() const { return model; }
    ToviFindingsFilter* Filter() const { return filter; }
    QTableView* View() const { return view; }
    QWidget* GetCtrl() override;

    void OnPreDetachData() override;

signals:
    // A row was double-clicked or Enter pressed on it: the photograph at this 0-based
    // position in PHOTO.XML.
    void PhotoActivated(int index);
    // The run started, advanced, ended or was cancelled, or the findings were dropped.
    void StateChanged();

private:
    struct Shared;

    void Poll();
    // Takes over what the run has found so far, at most limit findings into the table.
    void TakeFindings(size_t limit);
    void EndRun();
    // Cancels and joins the run; answers whether it had run to its end.
    bool Stop(bool keepFindings);
    void UpdateControls();
    void FillCodes();
    void OnActivated(const QModelIndex& index);

    ToviFindingsModel* model;
    ToviFindingsFilter* filter;
    QTableView* view;
    std::array<QCheckBox*, ToviCheckFinding::kSeverityCount> severityChecks{};
    QComboBox* codeCombo;
    QLabel* shownLabel;
    QProgressBar* progress;
    QPushButton* cancelButton;
    QPushButton* runButton;

    State state = Idle;
    qint64 done = 0;
    qint64 total = 0;
    std::shared_ptr<Shared> shared;
    std::thread worker;
    std::vector<ToviCheckFinding> backlog;  // taken from the run, not yet in the table
    size_t backlogAt = 0;
    QTimer poll;
    int serialDefinition = -1;
};

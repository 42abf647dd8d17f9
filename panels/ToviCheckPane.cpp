#include "panels/ToviCheckPane.h"

#include "checks/ToviDeliveryChecker.h"
#include "document/ToviPhoto.h"
#include "panels/ToviFindingsModel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include <algorithm>
#include <atomic>
#include <limits>
#include <mutex>
#include <vector>

namespace {

const QString kAllCodes = QStringLiteral("すべて");

}  // namespace

// What the run's thread and the pane share. The thread adds findings and progress; the pane
// takes them. Kept alive by both, so that neither depends on the other's lifetime.
struct ToviCheckPane::Shared {
    std::mutex mutex;
    std::vector<ToviCheckFinding> pending;  // under mutex
    std::atomic<bool> cancel{false};
    std::atomic<qint64> done{0};
    std::atomic<bool> finished{false};
    bool completed = false;  // written before finished is set
    bool failed = false;
};

namespace {

// Passes findings to the pane a few hundred at a time, so that the lock is taken rarely.
class BatchSink : public ToviFindingSink {
public:
    static constexpr size_t kBatch = 256;

    template <typename SharedState>
    explicit BatchSink(SharedState& shared) : mutex(shared.mutex), pending(shared.pending) {}

    void Add(ToviCheckFinding finding) override {
        local.push_back(std::move(finding));
        if (local.size() >= kBatch) {
            Flush();
        }
    }

    void Flush() {
        if (local.empty()) {
            return;
        }
        const std::lock_guard<std::mutex> lock(mutex);
        pending.insert(pending.end(), std::make_move_iterator(local.begin()),
                       std::make_move_iterator(local.end()));
        local.clear();
    }

private:
    std::mutex& mutex;
    std::vector<ToviCheckFinding>& pending;
    std::vector<ToviCheckFinding> local;
};

}  // namespace

ToviCheckPane::ToviCheckPane(QWidget* parent)
    : ToviPanel(parent),
      model(new ToviFindingsModel(this)),
      filter(new ToviFindingsFilter(this)),
      view(new QTableView(this)),
      codeCombo(new QComboBox(this)),
      shownLabel(new QLabel(this)),
      progress(new QProgressBar(this)),
      cancelButton(new QPushButton(QStringLiteral("中止"), this)),
      runButton(new QPushButton(QStringLiteral("再チェック"), this)) {
    setObjectName(QStringLiteral("checkPane"));
    filter->setSourceModel(model);

    auto* bar = new QHBoxLayout;
    bar->setContentsMargins(4, 2, 4, 2);
    for (int s = 0; s < ToviCheckFinding::kSeverityCount; ++s) {
        const auto severity = static_cast<ToviCheckFinding::Severity>(s);
        auto* check = new QCheckBox(this);
        check->setObjectName(QStringLiteral("severity%1").arg(s));
        check->setIcon(ToviFindingsModel::SeverityIcon(severity));
        check->setChecked(true);
        connect(check, &QCheckBox::toggled, this, [this, severity](bool on) {
            filter->SetSeverityShown(severity, on);
            UpdateControls();
        });
        severityChecks[static_cast<size_t>(s)] = check;
        bar->addWidget(check);
    }
    bar->addSpacing(12);
    auto* codeTitle = new QLabel(QStringLiteral("コード(&D):"), this);
    codeTitle->setBuddy(codeCombo);
    bar->addWidget(codeTitle);
    codeCombo->setObjectName(QStringLiteral("codeCombo"));
    codeCombo->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    codeCombo->addItem(kAllCodes, QString());
    connect(codeCombo, &QComboBox::currentIndexChanged, this, [this](int at) {
        filter->SetCode(codeCombo->itemData(at).toString());
        UpdateControls();
    });
    bar->addWidget(codeCombo);
    bar->addSpacing(12);
    shownLabel->setObjectName(QStringLiteral("shownLabel"));
    bar->addWidget(shownLabel);
    bar->addStretch(1);
    progress->setObjectName(QStringLiteral("checkProgress"));
    progress->setMaximumWidth(240);
    progress->setFormat(QStringLiteral("チェック中 %p%"));
    bar->addWidget(progress);
    cancelButton->setObjectName(QStringLiteral("cancelCheck"));
    connect(cancelButton, &QPushButton::clicked, this, &ToviCheckPane::Cancel);
    bar->addWidget(cancelButton);
    runButton->setObjectName(QStringLiteral("runCheck"));
    runButton->setToolTip(QStringLiteral("開いている電子納品をもう一度チェックする"));
    connect(runButton, &QPushButton::clicked, this, &ToviCheckPane::Start);
    bar->addWidget(runButton);

    view->setObjectName(QStringLiteral("findingsView"));
    view->setModel(filter);
    view->setSortingEnabled(true);
    view->sortByColumn(ToviFindingsModel::ColumnNumber, Qt::AscendingOrder);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::SingleSelection);
    view->setEditTriggers(QAbstractItemView::NoEditTriggers);
    view->setWordWrap(false);
    view->setAlternatingRowColors(true);
    // A hundred thousand rows: every row one line high, nothing measured from the contents.
    view->verticalHeader()->hide();
    view->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    view->verticalHeader()->setDefaultSectionSize(view->fontMetrics().height() + 6);
    QHeaderView* header = view->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setStretchLastSection(true);
    header->setHighlightSections(false);
    const QFontMetrics metrics = view->fontMetrics();
    const auto width = [&metrics](const char* sample) {
        return metrics.horizontalAdvance(QString::fromUtf8(sample)) + 24;
    };
    header->resizeSection(ToviFindingsModel::ColumnNumber, width("000000"));
    header->resizeSection(ToviFindingsModel::ColumnSerial, width("シリアル番号"));
    header->resizeSection(ToviFindingsModel::ColumnSeverity, width("エラー") + 20);
    header->resizeSection(ToviFindingsModel::ColumnCode, width("date.outside-period"));
    header->resizeSection(ToviFindingsModel::ColumnItem, width("撮影年月日撮影"));
    header->resizeSection(ToviFindingsModel::ColumnFile, width("PIC/P0000000.JPG"));
    connect(view, &QAbstractItemView::activated, this, &ToviCheckPane::OnActivated);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(bar);
    layout->addWidget(view, 1);

    connect(model, &ToviFindingsModel::CodesChanged, this, &ToviCheckPane::FillCodes);
    poll.setInterval(kPollMs);
    connect(&poll, &QTimer::timeout, this, &ToviCheckPane::Poll);
    UpdateControls();
}

ToviCheckPane::~ToviCheckPane() {
    Stop(false);
}

QWidget* ToviCheckPane::GetCtrl() {
    return view;
}

int ToviCheckPane::Count(ToviCheckFinding::Severity severity) const {
    return model->Count(severity);
}

QString ToviCheckPane::CountText() const {
    return QStringLiteral("エラー %1 / 警告 %2 / 注意 %3")
        .arg(Count(ToviCheckFinding::Error))
        .arg(Count(ToviCheckFinding::Warning))
        .arg(Count(ToviCheckFinding::Note));
}

bool ToviCheckPane::Start() {
    Stop(false);
    model->Clear();
    if (!data) {
        UpdateControls();
        emit StateChanged();
        return false;
    }
    // The photograph's serial number is shown beside each finding: its definition, found once.
    serialDefinition = data->GetItemDef()->GetIndexFromTitle(QStringLiteral("シリアル番号"));
    shared = std::make_shared<Shared>();
    done = 0;
    total = data->GetTotalCountPhoto();
    state = Running;
    // While rows arrive they are added at the end: sorting each batch into a hundred
    // thousand rows would hold up the window. The order chosen is applied when the run ends.
    filter->setDynamicSortFilter(false);
    // The checks read only what the load made of PHOTO.XML (the items, their definitions,
    // the management items, the actual array) and the files; nothing the viewer changes while
    // a delivery is open (labels, comments, the current array, the selection, the sort).
    std::unique_ptr<ToviDeliveryChecker> checker = ToviDeliveryChecker::Standard(true);
    worker = std::thread([run = shared, checker = std::move(checker), document = data] {
        BatchSink sink(*run);
        checker->SetCancelFlag(&run->cancel);
        checker->SetProgress([&run](qint64 at, qint64) { run->done.store(at); });
        bool completed = false;
        bool failed = false;
        try {
            completed = checker->Run(*document, sink);
        } catch (...) {
            failed = true;  // a check that trips over the delivery ends the run, not the viewer
        }
        sink.Flush();
        {
            const std::lock_guard<std::mutex> lock(run->mutex);
            run->completed = completed;
            run->failed = failed;
        }
        run->finished.store(true);
    });
    poll.start();
    UpdateControls();
    emit StateChanged();
    return true;
}

void ToviCheckPane::Cancel() {
    if (state != Running) {
        return;
    }
    // A run that ended just before the cancel came keeps its verdict.
    state = Stop(true) ? Done : Cancelled;
    if (state == Done) {
        done = total;
    }
    UpdateControls();
    emit StateChanged();
}

bool ToviCheckPane::Stop(bool keepFindings) {
    poll.stop();
    if (!shared) {
        return false;
    }
    shared->cancel.store(true);
    if (worker.joinable()) {
        worker.join();
    }
    // The thread has ended: what it wrote is there to read.
    const bool completed = shared->completed;
    if (keepFindings) {
        TakeFindings(std::numeric_limits<size_t>::max());
    }
    backlog.clear();
    backlogAt = 0;
    shared.reset();
    EndRun();
    return completed;
}

void ToviCheckPane::OnPreDetachData() {
    // The document goes after this: the run ends before it, and its findings go with it.
    const bool had = shared != nullptr || model->rowCount() > 0;
    Stop(false);
    model->Clear();
    state = Idle;
    done = total = 0;
    UpdateControls();
    if (had) {
        emit StateChanged();
    }
}

void ToviCheckPane::TakeFindings(size_t limit) {
    {
        const std::lock_guard<std::mutex> lock(shared->mutex);
        if (backlog.empty()) {
            backlog.swap(shared->pending);
        } else {
            backlog.insert(backlog.end(), std::make_move_iterator(shared->pending.begin()),
                           std::make_move_iterator(shared->pending.end()));
            shared->pending.clear();
        }
    }
    done = shared->done.load();
    const size_t count = std::min(limit, backlog.size() - backlogAt);
    if (count == 0) {
        return;
    }
    std::vector<ToviFindingsModel::Row> rows;
    rows.reserve(count);
    for (size_t i = backlogAt; i < backlogAt + count; ++i) {
        ToviCheckFinding& finding = backlog[i];
        QString serial;
        if (serialDefinition >= 0 && data) {
            if (const ToviPhoto* photo = data->GetPhotoActualPhotoArray(finding.index)) {
                serial = photo->GetTitle(serialDefinition);
            }
        }
        rows.push_back({std::move(finding), serial});
    }
    backlogAt += count;
    if (backlogAt == backlog.size()) {
        backlog.clear();
        backlogAt = 0;
    }
    model->Append(std::move(rows));
}

void ToviCheckPane::Poll() {
    if (!shared) {
        poll.stop();
        return;
    }
    // Read first: whatever the run added before it ended is in pending by then.
    const bool finished = shared->finished.load();
    TakeFindings(kRowsPerPoll);
    if (finished && backlog.empty()) {
        poll.stop();
        worker.join();
        state = shared->failed ? Failed : shared->completed ? Done : Cancelled;
        if (state == Done) {
            done = total;
        }
        shared.reset();
        EndRun();
    }
    UpdateControls();
    emit StateChanged();
}

void ToviCheckPane::EndRun() {
    // The rows that came during the run take their place in the order chosen, once.
    filter->setDynamicSortFilter(true);
}

void ToviCheckPane::FillCodes() {
    const QString chosen = filter->Code();
    const QSignalBlocker blocker(codeCombo);
    codeCombo->clear();
    codeCombo->addItem(kAllCodes, QString());
    for (const QString& code : model->Codes()) {
        codeCombo->addItem(code, code);
    }
    // The code chosen stays chosen while the list grows; a new run starts from all.
    const int at = codeCombo->findData(chosen);
    codeCombo->setCurrentIndex(at < 0 ? 0 : at);
    if (at < 0) {
        filter->SetCode(QString());
    }
}

void ToviCheckPane::UpdateControls() {
    for (int s = 0; s < ToviCheckFinding::kSeverityCount; ++s) {
        const auto severity = static_cast<ToviCheckFinding::Severity>(s);
        severityChecks[static_cast<size_t>(s)]->setText(
            QStringLiteral("%1 %2")
                .arg(ToviCheckFinding::SeverityLabel(severity))
                .arg(Count(severity)));
    }
    const int all = model->rowCount();
    const int shown = filter->rowCount();
    QString text;
    switch (state) {
        case Idle:
            text = data ? QString() : QStringLiteral("電子納品が開かれていません");
            break;
        case Running:
            text = QStringLiteral("%1 件").arg(all);
            break;
        case Done:
            text = all == 0 ? QStringLiteral("問題は見つかりませんでした")
                            : QStringLiteral("%1 件").arg(all);
            break;
        case Cancelled:
            text = QStringLiteral("中止しました（%1 / %2 枚まで、%3 件）")
                       .arg(done)
                       .arg(total)
                       .arg(all);
            break;
        case Failed:
            text = QStringLiteral("チェックを最後まで行えませんでした（%1 件）").arg(all);
            break;
    }
    if (shown != all && all > 0) {
        text = QStringLiteral("%1 件中 %2 件を表示").arg(all).arg(shown);
    }
    shownLabel->setText(text);
    const bool running = state == Running;
    progress->setVisible(running);
    cancelButton->setVisible(running);
    runButton->setEnabled(data != nullptr);
    if (running) {
        progress->setRange(0, static_cast<int>(std::max<qint64>(total, 1)));
        progress->setValue(static_cast<int>(done));
    }
}

void ToviCheckPane::OnActivated(const QModelIndex& index) {
    const int photo = index.data(ToviFindingsModel::IndexRole).toInt();
    if (photo >= 0) {
        emit PhotoActivated(photo);
    }
}

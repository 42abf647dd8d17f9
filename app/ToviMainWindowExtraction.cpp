// The extraction window in its dock: given the delivery when one opens, reset and let go when
// it closes, kept in step with the photographs shown, and reached by Ctrl+F.

#include "app/ToviMainWindow.h"

#include "dialogs/ToviExtractionDlg.h"
#include "document/ToviData.h"

#include <QAction>
#include <QCheckBox>
#include <QDockWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// What the dock holds: the extraction window, registered with the host's document as a panel
// so that it hears of every delivery and of every change of the current array.
class ToviExtractionPane : public ToviPanel {
public:
    explicit ToviExtractionPane(QWidget* parent)
        : ToviPanel(parent), window(new ToviExtractionDlg(this)) {
        setObjectName(QStringLiteral("extractionPane"));
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(window);
        window->EnableExtractCtrl(false);
    }

    ToviExtractionDlg* Window() const { return window; }

    void OnPostAttachData() override {
        if (!data) {
            return;
        }
        window->SetData(data);
        window->EnableExtractCtrl(true);
        window->initialize();
        window->CheckExecutionEnable();
    }

    // The document is about to go (hint 9 or a detach): the window lets it go first.
    void OnPreDetachData() override { window->ReleaseData(); }

    void OnUpdate(QWidget* sender, ToviData::UpdateHint hint, QObject* object) override {
        ToviPanel::OnUpdate(sender, hint, object);
        if (data) {
            window->UpdateOutputAllPhotoButton();
        }
    }

private:
    ToviExtractionDlg* window;
};

}  // namespace

void ToviMainWindow::CreateExtractionDock() {
    extractionDock = new QDockWidget(QStringLiteral("抽出"), this);
    extractionDock->setObjectName(QStringLiteral("extractionDock"));
    extractionDock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetClosable |
                                QDockWidget::DockWidgetFloatable);
    auto* pane = new ToviExtractionPane(extractionDock);
    extractionPane = pane;
    extractionDlg = pane->Window();
    extractionDock->setWidget(pane);
    // Under the trees, where the inspector narrows down what they selected.
    addDockWidget(Qt::LeftDockWidgetArea, extractionDock);
    splitDockWidget(treeDock, extractionDock, Qt::Vertical);
    resizeDocks({extractionDock}, {pane->sizeHint().height()}, Qt::Vertical);
    document->AddPanel(pane);

    extractionAction = new QAction(QStringLiteral("抽出(&X)..."), this);
    extractionAction->setObjectName(QStringLiteral("extractionAction"));
    extractionAction->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_F));
    extractionAction->setToolTip(QStringLiteral("写真を条件で抽出する"));
    connect(extractionAction, &QAction::triggered, this, &ToviMainWindow::ShowExtraction);

    // The slide show has the screen to itself; the window comes back after it as it was.
    connect(slideAction, &QAction::toggled, this, [this](bool on) {
        if (on && slideShow && extractionDock->isVisible()) {
            extractionHiddenForSlides = true;
            extractionDock->hide();
        } else if (!on && extractionHiddenForSlides) {
            extractionHiddenForSlides = false;
            extractionDock->show();
        }
    });
}

void ToviMainWindow::ShowExtraction() {
    extractionDock->show();
    extractionDock->raise();
    extractionDock->activateWindow();
    // The first control that takes the keyboard: a check, or the details while all are
    // disabled for want of a delivery.
    for (QWidget* control : extractionDlg->findChildren<QWidget*>()) {
        if (control->isEnabled() && control->focusPolicy() != Qt::NoFocus &&
            (qobject_cast<QCheckBox*>(control) || qobject_cast<QPushButton*>(control))) {
            control->setFocus(Qt::ShortcutFocusReason);
            return;
        }
    }
    extractionDlg->setFocus(Qt::ShortcutFocusReason);
}

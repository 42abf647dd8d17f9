#pragma once

#include <QDialog>

class QComboBox;
class QListWidget;
class QPushButton;
class ToviItemManager;

// 「表示項目」と「表示順」の設定: which information-list items are shown and in which order.
// The hidden items stand in three lists, one per kind (management items, file facts, Exif
// facts) chosen by a drop-down; the shown ones in display order. OK rewrites the manager's
// list: the shown rows first, then the hidden ones.
class ToviItemSetUpDlg : public QDialog {
    Q_OBJECT
public:
    // manager is edited in place on OK, and only then.
    ToviItemSetUpDlg(ToviItemManager* manager, QWidget* parent = nullptr);

    // The object name of a control by its number (1090 to 1097, 1144).
    static QString ControlName(int id);

public slots:
    void accept() override;

private:
    QListWidget* VisibleHiddenList() const;
    void OnCategoryChanged(int index);
    // Moves the selected row of from into to, after to's selected row.
    void MoveRow(QListWidget* from, QListWidget* to);
    void MoveUpDown(int step);
    void UpdateButtons();

    ToviItemManager* manager;
    QComboBox* category;
    QListWidget* hiddenLists[3];
    QListWidget* shownList;
    QPushButton* cancelButton;
    QPushButton* okButton;
    QPushButton* showButton;
    QPushButton* hideButton;
    QPushButton* upButton;
    QPushButton* downButton;
    int visibleHidden = 0;  // the kind whose hidden list is showing
};

#pragma once

#include <QDialog>
#include <QList>

class QLabel;
class QListWidget;
class QListWidgetItem;
class QPushButton;

// 画像加工検知タイプの選択: which verifiers the tamper check runs, ticked in a list whose order
// is the order of the chain. The type of the electronic blackboard is offered only when the
// hash checker's library is at hand.
class ToviSelectImageTypeDlg : public QDialog {
    Q_OBJECT
public:
    // types: the camera types ticked at opening.
    explicit ToviSelectImageTypeDlg(const QList<int>& types, QWidget* parent = nullptr);

    // After OK, the ticked types in list order.
    const QList<int>& GetTypes() const { return types; }
    QListWidget* List() const { return list; }
    QLabel* Description() const { return description; }

    // The explanation shown for a type, and with no row selected.
    static QString DescriptionOf(int type);
    static QString NoSelectionText();

public slots:
    void accept() override;

private:
    void OnSelectionChanged();

    QListWidget* list;
    QLabel* description;
    QList<int> types;
};

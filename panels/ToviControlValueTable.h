#pragma once

#include <QTreeWidget>

class ToviControlValues;

// The 施工管理値 of a photograph as a table: 項目名, 設計値, 実測値 and 差, one row a value.
class ToviControlValueTable : public QTreeWidget {
    Q_OBJECT
public:
    explicit ToviControlValueTable(QWidget* parent = nullptr);

    void Clear() { clear(); }
    // Rows for the values that are not blank; none for a lone name or for a text of which some
    // part could not be read.
    void SetValues(const ToviControlValues& values);
    int RowCount() const { return topLevelItemCount(); }
    // Four columns of equal width across the table; kept so as the table is resized.
    void AdjustColumns();

protected:
    void resizeEvent(QResizeEvent* event) override;
};

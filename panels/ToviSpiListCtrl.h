#pragma once

#include <QColor>
#include <QList>
#include <QPair>
#include <QTreeWidget>

class ToviItemDef;
class ToviItemShowSettings;
class ToviTextPairArray;

// The information list of a photograph's cell: 項目名 and 入力値, one row per value in the
// order of the show settings, an item with several values taking several rows. The title
// column is coloured by what the item is (required, conditionally required, file or Exif
// fact); values are black.
class ToviSpiListCtrl : public QTreeWidget {
    Q_OBJECT
public:
    explicit ToviSpiListCtrl(QWidget* parent = nullptr);

    // Rows from pairs for every title of settings but 施工管理値.
    void Fill(const ToviItemShowSettings& settings, const ToviTextPairArray& pairs);
    // The colour table: the definitions' grades while it is empty, then the show settings'
    // file and Exif entries.
    void AddDefinitionColours(const ToviItemDef& def);
    void AddShowSettingColours(const ToviItemShowSettings& settings);
    void ClearAll();
    // Columns as the cell's layout wants them: halves, or with the title column hidden; kept
    // so as the list is resized.
    void AdjustColumns(bool showTitle, bool beside);
    QColor TitleColour(const QString& title) const;

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QList<QPair<QColor, QString>> itemColours;
    bool showTitle = true;
    bool beside = false;
};

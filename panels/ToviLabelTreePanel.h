#pragma once

#include "panels/ToviTreePanel.h"

// The six labels under the root "付箋", each with the number of photographs carrying it:
// selecting a label makes those photographs the document's current set.
class ToviLabelTreePanel : public ToviTreePanel {
    Q_OBJECT
public:
    explicit ToviLabelTreePanel(QWidget* parent = nullptr);

    bool IsLabelTreePanel() const override { return true; }
    bool IsSelectTreeRoot() const override;
    void OnPostVisible() override;
    void OnUpdate(QWidget* sender, ToviData::UpdateHint hint, QObject* object) override;

    void Initialize();
    // Each label's name, followed by " <n>" when n photographs carry it.
    void UpdateItemCount();
    void UpdateItemName();
    void ReSelectNode();

private:
    void OnSelchangedTree(QTreeWidgetItem* item);
    QTreeWidgetItem* Root() const;
};

#pragma once

#include "document/ToviData.h"

#include <QWidget>

// The base of what the host docks beside its main view: a child window holding the open
// document (never owning it) and reacting to the document's update hints. The host calls
// Attach once a document exists, forwards every hint to OnUpdate, and brackets a change of
// the visible panel with OnPreVisible and OnPostVisible.
class ToviPanel : public QWidget {
    Q_OBJECT
public:
    explicit ToviPanel(QWidget* parent = nullptr);

    // Both answer the document held before. OnPostAttachData runs after either, also when
    // nothing changed; OnPreDetachData only when a document was held and is let go.
    ToviData* Attach(ToviData* newData);
    ToviData* Detach();
    ToviData* GetData() const { return data; }

    virtual void ReCalcLayout() {}
    // The control that takes the keyboard in this panel; null when none.
    virtual QWidget* GetCtrl() { return nullptr; }
    // Makes the panel a child of parent; the host's layout gives it its size.
    virtual bool Create(QWidget* parent, int id);
    virtual bool OnPreVisible() { return true; }
    virtual void OnPostVisible() {}
    virtual void OnPostAttachData() {}
    virtual void OnPreDetachData() {}
    virtual bool IsLabelTreePanel() const { return false; }
    virtual bool IsSelectTreeRoot() const { return false; }
    // The base lets the document go on HintDetach and ignores every other hint; overrides
    // call it first.
    virtual void OnUpdate(QWidget* sender, ToviData::UpdateHint hint, QObject* object);

protected:
    ToviData* data = nullptr;
};

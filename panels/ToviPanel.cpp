#include "panels/ToviPanel.h"

ToviPanel::ToviPanel(QWidget* parent) : QWidget(parent) {}

ToviData* ToviPanel::Attach(ToviData* newData) {
    ToviData* old = data;
    if (old && old != newData) {
        OnPreDetachData();
    }
    data = newData;
    OnPostAttachData();
    return old;
}

ToviData* ToviPanel::Detach() {
    ToviData* old = data;
    if (old) {
        OnPreDetachData();
    }
    data = nullptr;
    OnPostAttachData();
    return old;
}

bool ToviPanel::Create(QWidget* parent, int id) {
    setParent(parent);
    setObjectName(QStringLiteral("panel%1").arg(id));
    setAttribute(Qt::WA_NoSystemBackground);
    show();
    return true;
}

void ToviPanel::OnUpdate(QWidget*, ToviData::UpdateHint hint, QObject*) {
    if (hint == ToviData::HintDetach) {
        Detach();
    }
}

#pragma once

#include <QLabel>
#include <QVBoxLayout>
#include <QWidget>

// A pane with its caption on top, as the information list and the 施工管理値 of a cell and of
// the property dialog have; what it holds is added to its layout below the caption.
inline QWidget* ToviCaptionPane(const QString& caption, const QString& name, QWidget* parent) {
    auto* pane = new QWidget(parent);
    pane->setObjectName(name);
    auto* layout = new QVBoxLayout(pane);
    layout->setContentsMargins(1, 0, 1, 0);
    layout->setSpacing(1);
    layout->addWidget(new QLabel(caption, pane));
    return pane;
}

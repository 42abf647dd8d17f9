#pragma once

class QObject;
class QWidget;

// What the library asks of the host's document: a broadcast of an update hint to every
// view. sender, when given, is skipped.
class ToviHostDocument {
public:
    virtual ~ToviHostDocument() = default;
    virtual void UpdateAllViews(QWidget* sender, int hint, QObject* object) = 0;
};

#pragma once

#include <QList>

class ToviNode;

// The children of a tree node; the node owns what the pointers point to.
class ToviNodeArray : public QList<ToviNode*> {
public:
    using QList<ToviNode*>::QList;
    ToviNodeArray() = default;
    virtual ~ToviNodeArray() = default;
};

#pragma once

#include <QList>

// The definitions a photograph's file paths are made from: found once per document and
// mode by title, and used for every photograph.
struct ToviPathTitles {
    QList<int> drawings;  // definition indexes of the reference-drawing titles
    int photo = -1;       // of the photograph's file name (or full path)
};

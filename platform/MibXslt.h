#pragma once

#include <QByteArray>
#include <QString>

// Applies the XSLT 1.0 stylesheet at stylesheetPath to the XML file at xmlPath and answers the
// result (an HTML page, as the stylesheets of index files make) in html. The transform reads
// no other file, touches no network and writes nothing; the XML's DTD is not loaded and its
// entities are not expanded. False with a one-line reason in error when either file cannot be
// read or the transform fails.
bool MibTransformXslt(const QString& xmlPath, const QString& stylesheetPath, QByteArray& html,
                      QString* error = nullptr);

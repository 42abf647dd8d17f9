#pragma once

#include <QByteArray>

// SVG drawings as this program draws them: only what the file itself holds. Qt Svg would read
// a picture that an <image> names by its path; a drawing from a delivery must not make the
// program read other files, so links to anything outside the document are taken out first.

// SVG files larger than this are not read.
constexpr qint64 LumSvgMaxFileBytes = 64 * 1024 * 1024;

// The document without the elements that link to something outside it (an <image> or <use>
// of another file, by path or URL), nor its document type, comments and processing
// instructions; links inside the document ("#id") and data carried in a link ("data:") stay.
// Empty when data is not a well-formed document with an <svg> root; the entity expansion
// limit of the XML reader turns away documents that would grow without end.
QByteArray LumSvgOwnContent(const QByteArray& data);

#pragma once

// Pictures for large generated deliveries: a delivery of 100,000 photographs gets its image
// files as hard links to a few real JPEGs, which costs neither the time nor the disc of writing
// one file per photograph.

#include "platform/Cp932.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStringList>

#include <unistd.h>

// Makes PIC/ in the PHOTO folder photo and gives each photograph, in the order PHOTO.XML names
// them, a hard link to one of pictures in turn.
inline void LinkPictures(const QString& photo, const QStringList& pictures) {
    QDir().mkpath(photo + QStringLiteral("/PIC"));
    QFile xml(photo + QStringLiteral("/PHOTO.XML"));
    if (pictures.isEmpty() || !xml.open(QIODevice::ReadOnly)) {
        qFatal("no PHOTO.XML or no pictures");
    }
    const QString text = Cp932::ToUnicode(xml.readAll());
    static const QRegularExpression name(
        QStringLiteral("<写真ファイル名>([^<]+)</写真ファイル名>"));
    int n = 0;
    for (auto it = name.globalMatch(text); it.hasNext(); ++n) {
        const QString target = photo + QStringLiteral("/PIC/") + it.next().captured(1);
        const QByteArray from = QFile::encodeName(pictures[n % pictures.size()]);
        if (::link(from.constData(), QFile::encodeName(target).constData()) != 0) {
            qFatal("cannot link %s", qPrintable(target));
        }
    }
}

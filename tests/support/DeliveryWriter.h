#pragma once

#include <QList>
#include <QPair>
#include <QSize>
#include <QString>
#include <QStringList>

#include "tests/support/ExifJpegWriter.h"

// Writes electronic deliveries for tests, benchmarks and the bundled sample: INDEX_C.XML and
// a Shift_JIS PHOTO.XML of any schema generation with PIC/ and DRA/ beside it. Everything
// follows from the seed, so a delivery can be written again byte for byte.

// The PHOTO.XML schema generations, named after the sections of the item definitions.
enum class Generation {
    Mlit11,
    Mlit14,
    Mlit16,
    Mlit18,
    Mlit20,
    Maff15,
    Maff17,
    Maff23,
    Nexco14,
    Nexco18,
    Nexco24,
};

struct DeliveryOptions {
    Generation generation = Generation::Mlit20;
    int photoCount = 60;
    quint32 seed = 1;
    // None writes PHOTO.XML and INDEX_C.XML only (benchmarks); Tiny a small solid JPEG per
    // file; Boards a drawn site scene with a blackboard, which needs a QGuiApplication.
    enum class Images { None, Tiny, Boards } images = Images::Boards;
    QSize imageSize{640, 480};   // Boards only
    QSize tinySize{64, 48};      // Tiny photographs (one solid colour, so any size is cheap)
    double drawingShare = 0.25;  // share of photographs with reference drawings
    double optionalShare = 0.7;  // chance that each optional element or block is written
    int maxRepeats = 2;  // most occurrences of 工種区分予備, 付加情報予備 and 付加情報 blocks
    bool indent = true;
};

struct WrittenPhoto {
    QString fileName;  // as written in 写真ファイル名, e.g. P0000001.JPG
    // Every leaf element of the photograph's 写真情報 as (tag, text), in file order.
    QList<QPair<QString, QString>> elements;
    QStringList drawings;  // reference-drawing file names in DRA/, in file order
    ExifFacts exif;        // what the image file carries (when images were written)
};

struct WrittenDelivery {
    QString photoFolder;  // root/INDEX_C/PHOTO, holding PHOTO.XML, PIC/ and DRA/
    int family = 0;       // 0 国交省, 2 農水省, 3 NEXCO
    // Every leaf element of PHOTO.XML outside 写真情報 as (tag, text), in file order.
    QList<QPair<QString, QString>> managementElements;
    QList<WrittenPhoto> photos;
};

// Writes the delivery under root (created if needed; existing files are overwritten).
// written may be null when the caller needs no record (large benchmark deliveries).
bool WriteDelivery(const QString& root, const DeliveryOptions& options, WrittenDelivery* written,
                   QString* error);

// The item-definition section name, e.g. "国交省-20".
QString SectionName(Generation generation);
// 0 for the 国交省 generations, 2 for 農水省, 3 for NEXCO.
int FamilyOf(Generation generation);
// All eleven generations, oldest first within each family.
QList<Generation> AllGenerations();
// Accepts a section name ("国交省-18") or its ASCII form ("mlit-18", "maff-23", "nexco-24").
bool GenerationFromName(const QString& name, Generation* generation);

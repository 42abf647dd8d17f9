#pragma once

#include "document/ToviData.h"
#include "document/ToviHostDocument.h"
#include "document/ToviItemArray.h"
#include "document/ToviNode.h"
#include "document/ToviPhoto.h"
#include "loading/ToviEnouDataFactory.h"
#include "platform/Cp932.h"

#include <QDir>
#include <QFile>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

// Hand-written 国交省-20 deliveries for the browse-and-review tests: a PHOTO.XML whose values
// are spelled out by the test, loaded through the real reader and READITEM.XML, with a host
// that records every hint the document broadcasts.
namespace review {

class RecordingHost : public ToviHostDocument {
public:
    void UpdateAllViews(QWidget*, int hint, QObject*) override { hints.append(hint); }
    QList<int> hints;
};

inline QString ImageName(int k) {
    return QString::asprintf("P%07d.JPG", k + 1);
}

// The PHOTO.XML text of one photograph per entry "工種=A;種別=;...", elements in the order the
// DTD requires ("種別=" writes an empty element). Required elements an entry doesn't name get a
// plain value; optional ones are left out. 付加情報 is written when the entry names one of its
// elements.
inline QString PhotoXmlText(const QStringList& photos) {
    QString xml = QStringLiteral(
        "<?xml version=\"1.0\" encoding=\"Shift_JIS\"?>\n"
        "<!DOCTYPE photodata SYSTEM \"PHOTO05.DTD\">\n"
        "<photodata DTD_version=\"05\">\n"
        "<基礎情報><写真フォルダ名>PHOTO/PIC</写真フォルダ名>"
        "<適用要領基準>土木202303-01</適用要領基準></基礎情報>\n");
    for (int k = 0; k < photos.size(); ++k) {
        const QStringList given = photos[k].split(QLatin1Char(';'), Qt::SkipEmptyParts);
        // Every value given for tag, else the fallback unless that is null.
        auto leaf = [&given](const char* tag, const QString& fallback = QString()) {
            const QString name = QString::fromUtf8(tag);
            QString out;
            for (const QString& part : given) {
                if (part.section(QLatin1Char('='), 0, 0) == name) {
                    out += QStringLiteral("<%1>%2</%1>")
                               .arg(name, part.section('=', 1).toHtmlEscaped());
                }
            }
            return out.isEmpty() && !fallback.isNull()
                       ? QStringLiteral("<%1>%2</%1>").arg(name, fallback)
                       : out;
        };
        xml += QStringLiteral("<写真情報><写真ファイル情報>") +
               leaf("シリアル番号", QString::number(k + 1)) + leaf("写真ファイル名", ImageName(k)) +
               leaf("メディア番号", QStringLiteral("1")) +
               QStringLiteral("</写真ファイル情報><撮影工種区分>") +
               leaf("写真-大分類", QStringLiteral("工事")) + leaf("写真区分") + leaf("工種") +
               leaf("種別") + leaf("細別") +
               leaf("写真タイトル", QStringLiteral("写真%1").arg(k + 1)) + leaf("工種区分予備") +
               QStringLiteral("</撮影工種区分>");
        if (!(leaf("参考図ファイル名") + leaf("参考図タイトル") + leaf("付加情報予備")).isEmpty()) {
            xml += QStringLiteral("<付加情報>") +
                   leaf("参考図ファイル名", QString::asprintf("D%07d.JPG", k + 1)) +
                   leaf("参考図タイトル", QStringLiteral("参考図")) + leaf("付加情報予備") +
                   QStringLiteral("</付加情報>");
        }
        xml += QStringLiteral("<撮影情報>") + leaf("撮影箇所") +
               leaf("撮影年月日", QStringLiteral("2024-04-01")) + QStringLiteral("</撮影情報>") +
               leaf("代表写真", QStringLiteral("0")) + leaf("提出頻度写真", QStringLiteral("0")) +
               QStringLiteral("</写真情報>\n");
    }
    return xml + QStringLiteral("</photodata>\n");
}

// Writes folder/PHOTO.XML in Shift_JIS.
inline bool WritePhotoXml(const QString& folder, const QStringList& photos) {
    QDir().mkpath(folder + QStringLiteral("/PIC"));
    QFile file(folder + QStringLiteral("/PHOTO.XML"));
    bool ok = false;
    const QByteArray bytes = Cp932::FromUnicode(PhotoXmlText(photos), &ok);
    return ok && file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// Loads the delivery in folder as family 0 with host as the host's document; null when the
// load failed or found an error.
inline std::unique_ptr<ToviData> Open(ToviHostDocument* host, const QString& folder) {
    std::unique_ptr<ToviData> document(ToviEnouDataFactory().Create(host, folder, PhotoXMLMlit));
    return document && document->GetErrorType() == ReadErrNone ? std::move(document) : nullptr;
}

// The tree below node as text: each child's title, "{photo indexes}" of its own, and
// "[children]" in order; the root is written without its title.
inline QString Dump(const ToviNode& node) {
    QStringList numbers;
    QStringList children;
    for (int index : node.Indexes()) {
        numbers.append(QString::number(index));
    }
    for (const ToviNode* child : node.Items()) {
        children.append(child->Title() + Dump(*child));
    }
    return (numbers.isEmpty() ? QString() : QLatin1Char('{') + numbers.join(',') + '}') +
           (children.isEmpty() ? QString() : QLatin1Char('[') + children.join(',') + ']');
}

// The node reached from node by titles "A/B/C", null when there is none; "" is node itself.
inline ToviNode* NodeAt(ToviNode* node, const QString& path) {
    for (const QString& title : path.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        ToviNode* parent = node;
        node = nullptr;
        for (ToviNode* child : parent->Items()) {
            node = child->Title() == title ? child : node;
        }
        if (!node) {
            return nullptr;
        }
    }
    return node;
}

// A photograph's labels as the digits of the pasted slots, then "c" when it has a comment.
inline QString Labels(const ToviPhoto& photo) {
    QString text;
    for (int label = 0; label < ToviPhoto::kLabelCount; ++label) {
        text += photo.IsLabelPasted(label) ? QString::number(label) : QString();
    }
    return photo.GetComment().isEmpty() ? text : text + QLatin1Char('c');
}

// Pastes the labels (and a comment for "c") that Labels would write.
inline void SetLabels(ToviPhoto& photo, const QString& text) {
    for (const QChar c : text) {
        if (c == QLatin1Char('c')) {
            photo.SetComment(QStringLiteral("要確認"));
        } else {
            photo.PasteLabel(static_cast<unsigned int>(c.digitValue()));
        }
    }
}

inline QStringList AllLabels(const ToviData& document) {
    QStringList all;
    for (int k = 0; k < document.GetTotalCountPhoto(); ++k) {
        all.append(Labels(*document.GetPhotoActualPhotoArray(k)));
    }
    return all;
}

}  // namespace review

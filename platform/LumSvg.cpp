#include "platform/LumSvg.h"

#include <QXmlStreamReader>
#include <QXmlStreamWriter>

#include <algorithm>

namespace {

QStringView LocalName(QStringView qualified) {
    const qsizetype colon = qualified.lastIndexOf(QLatin1Char(':'));
    return colon < 0 ? qualified : qualified.mid(colon + 1);
}

// A link that stays inside the document: a fragment of it, or data carried in the link.
bool IsOwnContent(QStringView link) {
    const QStringView trimmed = link.trimmed();
    return trimmed.isEmpty() || trimmed.startsWith(QLatin1Char('#')) ||
           trimmed.startsWith(QLatin1String("data:"), Qt::CaseInsensitive);
}

}  // namespace

QByteArray LumSvgOwnContent(const QByteArray& data) {
    QXmlStreamReader reader(data);
    // Names as written, so that the namespace declarations are copied as plain attributes.
    reader.setNamespaceProcessing(false);
    QByteArray out;
    QXmlStreamWriter writer(&out);
    writer.writeStartDocument();
    bool sawRoot = false;
    while (!reader.atEnd()) {
        switch (reader.readNext()) {
            case QXmlStreamReader::StartElement: {
                if (!sawRoot && LocalName(reader.qualifiedName()) != QLatin1String("svg")) {
                    return QByteArray();
                }
                sawRoot = true;
                const QXmlStreamAttributes attributes = reader.attributes();
                const bool outside =
                    std::any_of(attributes.begin(), attributes.end(), [](const auto& attribute) {
                        return LocalName(attribute.qualifiedName()) == QLatin1String("href") &&
                               !IsOwnContent(attribute.value());
                    });
                if (outside) {
                    // The element goes with what it holds: an <image> or <use> without its
                    // link would only draw nothing, with a complaint.
                    reader.skipCurrentElement();
                    break;
                }
                writer.writeStartElement(reader.qualifiedName().toString());
                for (const QXmlStreamAttribute& attribute : attributes) {
                    writer.writeAttribute(attribute.qualifiedName().toString(),
                                          attribute.value().toString());
                }
                break;
            }
            case QXmlStreamReader::EndElement:
                writer.writeEndElement();
                break;
            case QXmlStreamReader::Characters:
                if (reader.isCDATA()) {
                    writer.writeCDATA(reader.text().toString());
                } else {
                    writer.writeCharacters(reader.text().toString());
                }
                break;
            case QXmlStreamReader::EntityReference:
                // An entity of the document's own declarations, already expanded by the reader.
                writer.writeCharacters(reader.text().toString());
                break;
            default:
                // The document type, comments and processing instructions are not needed to
                // draw; a style sheet named by a processing instruction is thus not read.
                break;
        }
    }
    if (reader.hasError() || !sawRoot) {
        return QByteArray();
    }
    writer.writeEndDocument();
    return out;
}

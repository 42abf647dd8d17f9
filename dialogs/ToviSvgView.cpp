#include "dialogs/ToviSvgView.h"

#include "platform/MibFile.h"

#include <QFile>
#include <QMouseEvent>
#include <QPainter>
#include <QSvgRenderer>
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

QByteArray ToviSvgView::OwnContentOnly(const QByteArray& data) {
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

ToviSvgView::ToviSvgView(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("svgView"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setContextMenuPolicy(Qt::PreventContextMenu);
    setFocusPolicy(Qt::ClickFocus);
}

ToviSvgView::~ToviSvgView() = default;

bool ToviSvgView::Load(const QString& file) {
    Clear();
    QFile source;
    if (!MibOpenRegularFile(source, file) || source.size() > kMaxFileBytes) {
        return false;
    }
    const QByteArray content = OwnContentOnly(source.readAll());
    if (content.isEmpty()) {
        return false;
    }
    auto drawing = std::make_unique<QSvgRenderer>(content);
    if (!drawing->isValid()) {
        return false;
    }
    renderer = std::move(drawing);
    path = file;
    update();
    return true;
}

void ToviSvgView::Clear() {
    path.clear();
    rendered = QImage();
    renderer.reset();
    update();
}

bool ToviSvgView::IsLoaded() const {
    return renderer != nullptr;
}

QRect ToviSvgView::DrawingRect() const {
    if (!IsLoaded() || width() <= 0 || height() <= 0) {
        return QRect();
    }
    // The proportions come from the view box, in floating point: a drawing claiming a size
    // beyond what an int holds still has a shape.
    QSizeF shape = renderer->viewBoxF().size();
    if (shape.isEmpty()) {
        shape = renderer->defaultSize();
    }
    if (shape.isEmpty()) {
        return rect();
    }
    QSizeF fitted = shape.scaled(QSizeF(size()), Qt::KeepAspectRatio);
    const QSize whole = fitted.toSize().expandedTo(QSize(1, 1)).boundedTo(size());
    return QRect(QPoint((width() - whole.width()) / 2, (height() - whole.height()) / 2), whole);
}

void ToviSvgView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), Qt::white);
    const QRect target = DrawingRect();
    if (target.isEmpty()) {
        return;
    }
    const qreal ratio = devicePixelRatioF();
    const QSize pixels = (QSizeF(target.size()) * ratio).toSize();
    if (rendered.size() != pixels) {
        rendered = QImage(pixels, QImage::Format_RGB32);
        if (rendered.isNull()) {
            return;
        }
        rendered.setDevicePixelRatio(ratio);
        rendered.fill(Qt::white);
        QPainter canvas(&rendered);
        canvas.setRenderHint(QPainter::Antialiasing);
        renderer->render(&canvas, QRectF(QPointF(0, 0), QSizeF(target.size())));
    }
    painter.drawImage(target.topLeft(), rendered);
}

void ToviSvgView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    rendered = QImage();
}

void ToviSvgView::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        emit Clicked();
    }
    event->accept();  // the right button too: no menu, and the parent does not get it
}

void ToviSvgView::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        emit DoubleClicked();
    }
    event->accept();
}

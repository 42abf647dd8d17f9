#include "platform/DoxDocument.h"

#include "platform/Cp932.h"
#include "platform/DoxNodes.h"
#include "platform/MibFile.h"

#include <pugixml.hpp>

#include <QFile>

#include <cstring>

namespace {

// The declaration and a byte-order mark stand within this much of a file's start.
constexpr qsizetype kHeadSize = 4096;
// A file in code page 932 is decoded in pieces of this size as it is read.
constexpr qsizetype kPieceSize = 1 << 20;

bool HasBom(const QByteArray& head) {
    return head.startsWith("\xEF\xBB\xBF") || head.startsWith("\xFF\xFE") ||
           head.startsWith("\xFE\xFF");
}

constexpr unsigned kParseOptions =
    pugi::parse_default | pugi::parse_declaration | pugi::parse_doctype | pugi::parse_embed_pcdata;

// Reads encoding="..." from an XML declaration at the start of ASCII-compatible bytes.
QByteArray ParseDeclaredEncoding(const QByteArray& bytes) {
    if (!bytes.startsWith("<?xml")) {
        return QByteArray();
    }
    const qsizetype end = bytes.indexOf("?>");
    if (end < 0) {
        return QByteArray();
    }
    const QByteArray decl = bytes.left(end);
    const qsizetype at = decl.indexOf("encoding");
    if (at < 0) {
        return QByteArray();
    }
    qsizetype pos = at + 8;
    while (pos < decl.size() && (decl[pos] == ' ' || decl[pos] == '=' || decl[pos] == '\t')) {
        ++pos;
    }
    if (pos >= decl.size() || (decl[pos] != '"' && decl[pos] != '\'')) {
        return QByteArray();
    }
    const char quote = decl[pos];
    const qsizetype close = decl.indexOf(quote, pos + 1);
    if (close < 0) {
        return QByteArray();
    }
    return decl.mid(pos + 1, close - pos - 1).trimmed();
}

// The iconv name to decode a declared encoding with; empty for UTF-8 (nothing to do).
QByteArray IconvName(const QByteArray& declared) {
    const QByteArray name = declared.toLower();
    if (name.isEmpty() || name == "utf-8" || name == "utf8") {
        return QByteArray();
    }
    if (name == "shift_jis" || name == "shift-jis" || name == "sjis" || name == "x-sjis" ||
        name == "windows-31j" || name == "cp932" || name == "ms_kanji" || name == "csshiftjis") {
        return "CP932";
    }
    return declared;
}

// A piece of the file quoted in an error line: a hostile declaration can run for kilobytes
// and carry terminal control codes, so it is cut to a readable length and controls are
// shown as '?'.
QString Quoted(const QByteArray& input) {
    constexpr qsizetype kMaxChars = 40;
    QString text = QString::fromLatin1(input.left(kMaxChars));
    for (QChar& c : text) {
        if (c.unicode() < 0x20 || (c.unicode() >= 0x7F && c.unicode() < 0xA0)) {
            c = QLatin1Char('?');
        }
    }
    if (input.size() > kMaxChars) {
        text.truncate(kMaxChars - 1);
        text += QChar(0x2026);
    }
    return text;
}

bool Fail(QStringList* errors, const QString& why) {
    if (errors) {
        errors->append(why);
    }
    return false;
}

// A streamed load cuts the text after this much of the root's children.
constexpr qsizetype kSliceSize = 4 << 20;
qsizetype sliceSize = kSliceSize;

// Where the markup of XML text begins and ends, enough to find the children of the root
// element in text that arrives in pieces: comments, CDATA sections, processing instructions
// and declarations are passed over whole, quoted attribute values may hold '>', and depth
// counts open elements below the root. Well-formedness is left to the parser.
class ChildScanner {
public:
    enum class Where { Prolog, Children, Closed, Broken };

    // Scans text from where the last call stopped to its end or to the first token cut
    // off there. In the prolog, the root's start tag is found and reported through
    // rootOpen (and the text before it is to be dropped: rootEnd says where the children
    // start). Among the children, boundary moves after every token that leaves depth 0.
    void Scan(const QByteArray& text) {
        const char* const data = text.constData();
        const qsizetype size = text.size();
        while (where == Where::Prolog || where == Where::Children) {
            const char* lt = static_cast<const char*>(
                std::memchr(data + scanned, '<', static_cast<size_t>(size - scanned)));
            if (!lt) {
                scanned = size;
                return;
            }
            const qsizetype at = lt - data;
            const qsizetype end = TokenEnd(data, size, at);
            if (end < 0) {
                scanned = at;  // cut off: wait for more text
                return;
            }
            const Where before = where;
            Take(data, at, end);
            scanned = end;
            if (before == Where::Prolog && where != Where::Prolog) {
                return;  // the caller drops the prolog before the children are scanned
            }
        }
    }

    Where where = Where::Prolog;
    qsizetype scanned = 0;
    qsizetype boundary = 0;    // among the children: the end of the last complete one
    qsizetype rootStart = -1;  // in the prolog: where the root's start tag was found
    qsizetype rootEnd = -1;    //                and just past it
    QByteArray rootName;
    int depth = 0;

private:
    // The end (just past '>') of the token at at, or -1 when the text stops first.
    static qsizetype TokenEnd(const char* data, qsizetype size, qsizetype at) {
        if (at + 1 < size && data[at + 1] != '!' && data[at + 1] != '?') {
            // A start or end tag, the usual case: its '>', unless a quote stands before it.
            const auto* gt = static_cast<const char*>(
                std::memchr(data + at + 1, '>', static_cast<size_t>(size - at - 1)));
            if (!gt) {
                return -1;
            }
            const size_t length = static_cast<size_t>(gt - (data + at));
            if (!std::memchr(data + at, '"', length) && !std::memchr(data + at, '\'', length)) {
                return gt - data + 1;
            }
        }
        const auto find = [&](const char* close) -> qsizetype {
            const QByteArrayView rest(data + at, size - at);
            const qsizetype found = rest.indexOf(QByteArrayView(close));
            return found < 0 ? -1 : at + found + static_cast<qsizetype>(std::strlen(close));
        };
        const QByteArrayView head(data + at, std::min<qsizetype>(9, size - at));
        if (head.startsWith("<!--")) {
            return find("-->");
        }
        if (head.startsWith("<![CDATA[")) {
            return find("]]>");
        }
        if (head.size() < 9 && QByteArrayView("<![CDATA[").startsWith(head)) {
            return -1;
        }
        if (head.startsWith("<?")) {
            return find("?>");
        }
        // A tag or a declaration: to the '>' outside quotes and outside a [...] subset.
        char quote = 0;
        int brackets = 0;
        for (qsizetype i = at + 1; i < size; ++i) {
            const char c = data[i];
            if (quote) {
                if (c == quote) {
                    quote = 0;
                }
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '[' && data[at + 1] == '!') {
                ++brackets;
            } else if (c == ']' && brackets > 0) {
                --brackets;
            } else if (c == '>' && brackets == 0) {
                return i + 1;
            }
        }
        return -1;
    }

    static QByteArray NameOf(const char* data, qsizetype from, qsizetype end) {
        qsizetype i = from;
        while (i < end && !std::strchr(" \t\r\n/>", data[i])) {
            ++i;
        }
        return QByteArray(data + from, i - from);
    }

    void Take(const char* data, qsizetype at, qsizetype end) {
        const char second = end - at > 1 ? data[at + 1] : '\0';
        const bool markup = second == '!' || second == '?';
        if (where == Where::Prolog) {
            if (markup) {
                return;
            }
            if (second == '/') {
                where = Where::Broken;  // an end tag before any element
                return;
            }
            rootStart = at;
            rootEnd = end;
            rootName = NameOf(data, at + 1, end);
            where = data[end - 2] == '/' ? Where::Closed : Where::Children;
            return;
        }
        if (markup) {
            if (depth == 0) {
                boundary = end;
            }
            return;
        }
        if (second == '/') {
            if (depth == 0) {
                // The root's end tag: its children end before it.
                where = NameOf(data, at + 2, end) == rootName ? Where::Closed : Where::Broken;
                return;
            }
            --depth;
        } else if (data[end - 2] != '/') {
            ++depth;
        }
        if (depth == 0) {
            boundary = end;
        }
    }
};

}  // namespace

// The reading side of a streamed load: the file, the decoded text not yet parsed, and where
// the scanner stands in it.
struct DoxDocument::Stream {
    QFile file;
    bool cp932 = false;
    QByteArray piece;       // bytes read and not yet decoded
    qsizetype carried = 0;  // of which an undecoded lead byte at the end of the last read
    bool atEnd = false;
    QByteArray text;  // decoded UTF-8 not yet parsed, from the children's start
    ChildScanner scanner;
    QByteArray rootOpen;      // the root's start tag as written
    qint64 offset = 0;        // position of text's first byte in the decoded file
    bool lastHanded = false;  // the slice holding the root's end has been parsed
    QString error;

    // Reads and decodes one more piece; false at the end of the file or on a read error.
    bool Fill(qsizetype& invalid) {
        if (atEnd) {
            return false;
        }
        const qint64 read = file.read(piece.data() + carried, piece.size() - carried);
        if (read < 0) {
            error = QStringLiteral("%1 を読めません").arg(file.fileName());
            atEnd = true;
            return false;
        }
        const qsizetype available = carried + static_cast<qsizetype>(read);
        atEnd = read == 0;
        if (!cp932) {
            text.append(piece.constData(), available);
            carried = 0;
            return !atEnd;
        }
        qsizetype used = 0;
        invalid += Cp932::DecodeToUtf8(piece.constData(), available, text, atEnd ? nullptr : &used);
        carried = atEnd ? 0 : available - used;
        std::memmove(piece.data(), piece.constData() + used, static_cast<size_t>(carried));
        return !atEnd;
    }
};

DoxDocument::DoxDocument() = default;
DoxDocument::~DoxDocument() = default;

bool DoxDocument::Initiate() {
    doc = std::make_unique<pugi::xml_document>();
    buffer.clear();
    declaredEncoding.clear();
    invalidSequences = 0;
    return true;
}

void DoxDocument::Terminate() {
    doc.reset();
    buffer.clear();
    buffer.squeeze();
}

bool DoxDocument::IsLoaded() const {
    return doc && doc->document_element();
}

bool DoxDocument::Load(const QString& path, bool, QStringList* errors) {
    QFile file;
    if (!MibOpenRegularFile(file, path)) {
        return Fail(errors, QStringLiteral("%1 を開けません").arg(path));
    }
    const QByteArray head = file.peek(kHeadSize);
    const QByteArray declared = ParseDeclaredEncoding(head);
    if (HasBom(head) || IconvName(declared) != "CP932") {
        const QByteArray bytes = file.readAll();
        if (file.error() != QFileDevice::NoError) {
            return Fail(errors, QStringLiteral("%1 を読めません").arg(path));
        }
        return LoadFromBytes(bytes, errors);
    }
    // Code page 932, the usual case, is decoded piece by piece as it is read, so that the
    // file's bytes and their UTF-8 form are never both held whole.
    Reset();
    declaredEncoding = QString::fromLatin1(declared);
    QByteArray utf8;
    const qint64 size = file.size();
    utf8.reserve(static_cast<qsizetype>(size + size / 2 + 64));
    QByteArray piece(kPieceSize, Qt::Uninitialized);
    qsizetype carried = 0;  // an undecoded lead byte from the previous piece
    for (;;) {
        const qint64 read = file.read(piece.data() + carried, piece.size() - carried);
        if (read < 0) {
            return Fail(errors, QStringLiteral("%1 を読めません").arg(path));
        }
        const qsizetype available = carried + static_cast<qsizetype>(read);
        const bool last = read == 0;
        qsizetype used = 0;
        invalidSequences +=
            Cp932::DecodeToUtf8(piece.constData(), available, utf8, last ? nullptr : &used);
        if (last) {
            break;
        }
        carried = available - used;
        std::memmove(piece.data(), piece.constData() + used, static_cast<size_t>(carried));
    }
    return Parse(std::move(utf8), errors);
}

bool DoxDocument::LoadFromBytes(const QByteArray& bytes, QStringList* errors) {
    Reset();
    QByteArray utf8;
    if (bytes.startsWith("\xEF\xBB\xBF")) {
        utf8 = bytes.mid(3);
        declaredEncoding = QStringLiteral("UTF-8");
    } else if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF")) {
        const char* enc = bytes.startsWith("\xFF\xFE") ? "UTF-16LE" : "UTF-16BE";
        if (!Cp932::ToUtf8(bytes.mid(2), enc, utf8)) {
            return Fail(errors, QStringLiteral("UTF-16 として読めない文字があります"));
        }
        declaredEncoding = QStringLiteral("UTF-16");
    } else {
        const QByteArray declared = ParseDeclaredEncoding(bytes.left(kHeadSize));
        declaredEncoding = QString::fromLatin1(declared);
        const QByteArray iconvName = IconvName(declared);
        if (iconvName.isEmpty()) {
            utf8 = bytes;
        } else if (iconvName == "CP932") {
            // A byte that isn't CP932 spoils its value only: it reads as U+FFFD.
            invalidSequences = Cp932::DecodeToUtf8(bytes.constData(), bytes.size(), utf8);
        } else if (!Cp932::ToUtf8(bytes, iconvName.constData(), utf8)) {
            return Fail(errors,
                        QStringLiteral("文字コード %1 として読めません").arg(Quoted(declared)));
        }
    }
    return Parse(std::move(utf8), errors);
}

bool DoxDocument::LoadStreamed(const QString& path, QStringList* errors) {
    auto next = std::make_unique<Stream>();
    if (!MibOpenRegularFile(next->file, path)) {
        return Fail(errors, QStringLiteral("%1 を開けません").arg(path));
    }
    const QByteArray head = next->file.peek(kHeadSize);
    const QByteArray declared = ParseDeclaredEncoding(head);
    const QByteArray iconvName = IconvName(declared);
    const bool utf8Bom = head.startsWith("\xEF\xBB\xBF");
    if ((HasBom(head) && !utf8Bom) || (!iconvName.isEmpty() && iconvName != "CP932") ||
        (utf8Bom && iconvName == "CP932")) {
        next.reset();
        return Load(path, false, errors);  // UTF-16 and the rare others: read whole
    }
    Reset();
    declaredEncoding = utf8Bom ? QStringLiteral("UTF-8") : QString::fromLatin1(declared);
    if (utf8Bom) {
        next->file.skip(3);
    }
    next->cp932 = iconvName == "CP932";
    next->piece.resize(kPieceSize);
    stream = std::move(next);
    Stream& in = *stream;
    // The prolog, up to the root's start tag.
    while (in.scanner.Scan(in.text), in.scanner.where == ChildScanner::Where::Prolog) {
        if (!in.Fill(invalidSequences)) {
            break;
        }
    }
    if (in.scanner.where == ChildScanner::Where::Prolog ||
        in.scanner.where == ChildScanner::Where::Broken) {
        const QString why = in.error.isEmpty()
                                ? QStringLiteral("XML の形式が正しくありません (要素がありません)")
                                : in.error;
        stream.reset();
        return Fail(errors, why);
    }
    const qsizetype rootEnd = in.scanner.rootEnd;
    in.rootOpen = in.text.mid(in.scanner.rootStart, rootEnd - in.scanner.rootStart);
    if (in.rootOpen.endsWith("/>")) {
        in.rootOpen.chop(2);
        in.rootOpen += '>';
    }
    in.text.remove(0, rootEnd);
    in.offset = rootEnd;
    in.scanner.scanned = 0;
    in.scanner.boundary = 0;
    if (!NextSlice()) {
        QStringList why;
        FinishStream(&why);
        stream.reset();
        return Fail(errors, why.isEmpty() ? QStringLiteral("XML の形式が正しくありません")
                                          : why.join(QLatin1Char(' ')));
    }
    return true;
}

bool DoxDocument::NextSlice() {
    if (!stream || !stream->error.isEmpty()) {
        return false;
    }
    Stream& in = *stream;
    ChildScanner& scanner = in.scanner;
    if (in.lastHanded) {
        return false;
    }
    for (;;) {
        scanner.Scan(in.text);
        if (scanner.where == ChildScanner::Where::Broken) {
            in.error =
                QStringLiteral("XML の形式が正しくありません (終了タグが合いません, 位置 %1)")
                    .arg(in.offset + scanner.scanned);
            return false;
        }
        if (scanner.where == ChildScanner::Where::Closed || scanner.boundary >= sliceSize) {
            break;
        }
        if (!in.Fill(invalidSequences)) {
            if (in.error.isEmpty()) {
                in.error = QStringLiteral(
                               "XML の形式が正しくありません (ルート要素が閉じていません, 位置 %1)")
                               .arg(in.offset + in.text.size());
            }
            return false;
        }
    }
    // The slice: the root's start tag, the complete children gathered, the root's end tag.
    const qsizetype cut = scanner.boundary;
    QByteArray slice;
    slice.reserve(in.rootOpen.size() + cut + scanner.rootName.size() + 3);
    slice += in.rootOpen;
    slice.append(in.text.constData(), cut);
    slice += "</" + scanner.rootName + '>';
    const qint64 sliceOffset = in.offset - in.rootOpen.size();
    in.text.remove(0, cut);
    in.offset += cut;
    scanner.scanned -= cut;
    scanner.boundary = 0;
    in.lastHanded = scanner.where == ChildScanner::Where::Closed;

    // Parsed beside the current tree, which a cursor still stands in until this succeeds.
    auto tree = std::make_unique<pugi::xml_document>();
    const pugi::xml_parse_result result = tree->load_buffer_inplace(
        slice.data(), static_cast<size_t>(slice.size()), kParseOptions, pugi::encoding_utf8);
    if (!result || !tree->document_element()) {
        in.error = QStringLiteral("XML の形式が正しくありません (%1, 位置 %2)")
                       .arg(QString::fromUtf8(result.description()))
                       .arg(sliceOffset + static_cast<qint64>(result.offset));
        return false;
    }
    doc = std::move(tree);
    buffer = std::move(slice);
    ++generation;
    return true;
}

void DoxDocument::SetSliceSizeForTesting(qsizetype bytes) {
    sliceSize = bytes > 0 ? bytes : kSliceSize;
}

bool DoxDocument::FinishStream(QStringList* errors) {
    if (!stream) {
        return true;
    }
    while (NextSlice()) {
    }
    const QString error = stream->error;
    stream.reset();
    return error.isEmpty() || Fail(errors, error);
}

void DoxDocument::Reset() {
    if (!doc) {
        Initiate();
    }
    doc->reset();
    buffer.clear();
    declaredEncoding.clear();
    invalidSequences = 0;
    stream.reset();
}

bool DoxDocument::Parse(QByteArray utf8, QStringList* errors) {
    buffer = std::move(utf8);
    buffer.detach();
    const pugi::xml_parse_result result = doc->load_buffer_inplace(
        buffer.data(), static_cast<size_t>(buffer.size()), kParseOptions, pugi::encoding_utf8);
    if (!result || !doc->document_element()) {
        const QString why =
            result ? QStringLiteral("要素がありません") : QString::fromUtf8(result.description());
        doc->reset();
        buffer.clear();
        return Fail(errors, QStringLiteral("XML の形式が正しくありません (%1, 位置 %2)")
                                .arg(why)
                                .arg(static_cast<qlonglong>(result.offset)));
    }
    return true;
}

bool DoxDocument::Save(const QString& path, QStringList* errors) const {
    if (!IsLoaded()) {
        return Fail(errors, QStringLiteral("保存する文書がありません"));
    }
    // The declaration is rewritten to name the encoding actually written.
    pugi::xml_document copy;
    copy.reset(*doc);
    pugi::xml_node decl = copy.first_child();
    if (decl.type() != pugi::node_declaration) {
        decl = copy.prepend_child(pugi::node_declaration);
        decl.append_attribute("version") = "1.0";
    }
    if (!decl.attribute("encoding")) {
        decl.append_attribute("encoding");
    }
    decl.attribute("encoding") = "Shift_JIS";

    struct Writer : pugi::xml_writer {
        QByteArray out;
        void write(const void* data, size_t size) override {
            out.append(static_cast<const char*>(data), static_cast<qsizetype>(size));
        }
    } writer;
    copy.save(writer, "\t", pugi::format_default | pugi::format_no_declaration,
              pugi::encoding_utf8);

    QByteArray sjis;
    if (!Cp932::FromUtf8(writer.out, "CP932", sjis)) {
        return Fail(errors, QStringLiteral("Shift_JIS で表せない文字があります"));
    }
    QString error;
    if (!MibWriteFileAtomic(path, sjis, &error)) {
        return Fail(errors, QStringLiteral("%1 に書き込めません: %2").arg(path, error));
    }
    return true;
}

#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <memory>

namespace pugi {
class xml_document;
class xml_node;
struct xml_node_struct;
}  // namespace pugi

// An XML document read into memory. The file is decoded by the encoding its declaration
// names (Shift_JIS read as CP932; a byte-order mark wins), so that the tree holds text.
class DoxDocument {
public:
    DoxDocument();
    ~DoxDocument();
    DoxDocument(const DoxDocument&) = delete;
    DoxDocument& operator=(const DoxDocument&) = delete;

    bool Initiate();
    // Reads and parses the file. False for a missing file, an encoding that can't be
    // decoded, or XML that isn't well formed; errors (when given) receives one line why.
    // In Shift_JIS (CP932) a byte that isn't part of the code page doesn't fail the load: it
    // becomes U+FFFD and is counted in InvalidSequenceCount.
    bool Load(const QString& path, bool validate = false, QStringList* errors = nullptr);
    // The same from bytes in memory.
    bool LoadFromBytes(const QByteArray& bytes, QStringList* errors = nullptr);
    // Reads the file as Load does, but the children of the root element are parsed a slice
    // of a few megabytes at a time, as one cursor reaches them; what lies behind is released.
    // A large file is thus never held whole, as text or as a tree. Only forward walks work
    // (Root first, then Child, Parent, NextSibling, Next); an element of an earlier slice is
    // gone. False when the file can't be opened or has no root element; XML found broken
    // further on ends the walk there, and FinishStream tells.
    bool LoadStreamed(const QString& path, QStringList* errors = nullptr);
    // The slice size of streamed loads (bytes of text); 0 returns to the usual few megabytes.
    static void SetSliceSizeForTesting(qsizetype bytes);
    // After a streamed walk: reads what the cursor did not reach and answers whether the
    // whole file was well formed (errors receives one line why not). True for other loads.
    bool FinishStream(QStringList* errors = nullptr);
    // Writes the document as Shift_JIS (CP932), keeping its document type line, through a
    // temporary file renamed into place. False when a text has no CP932 form or the write
    // fails; the old file is then left as it was.
    bool Save(const QString& path, QStringList* errors = nullptr) const;
    void Terminate();

    bool IsLoaded() const;
    // The declared encoding as it stood in the file ("Shift_JIS", "UTF-8", ...).
    QString DeclaredEncoding() const { return declaredEncoding; }
    // How many bytes or pairs of the last load read as U+FFFD.
    qsizetype InvalidSequenceCount() const { return invalidSequences; }

private:
    friend class DoxIterator;
    struct Stream;
    void Reset();
    bool Parse(QByteArray utf8, QStringList* errors);
    // Parses the next slice of a streamed load in place of the current one; false at the end
    // of the root element or when the file proves broken.
    bool NextSlice();

    std::unique_ptr<pugi::xml_document> doc;
    QByteArray buffer;  // the decoded UTF-8 text; the tree points into it
    QString declaredEncoding;
    qsizetype invalidSequences = 0;
    std::unique_ptr<Stream> stream;
    quint64 generation = 0;  // counts the trees parsed, so that a cursor's place is unique
};

// A cursor over the elements of a DoxDocument. Moves answer false and leave the cursor in
// place when there is no such element.
class DoxIterator {
public:
    explicit DoxIterator(DoxDocument* document);

    bool Root();
    bool Child();  // the first child element
    bool ChildHead() { return Child(); }
    bool ChildTail();  // the last child element
    bool Parent();
    bool NextSibling();
    // The next element in document order; false at the end of the document.
    bool Next();

    bool GetTagName(QString& tag) const;
    QString GetTagName() const;
    // Compares the tag with a UTF-8 name without building a text.
    bool IsTag(const QByteArray& utf8Name) const;
    bool GetText(QString& text) const;
    QString GetText() const;
    // The element's text as UTF-8, without building a text: a view into the document when
    // the text is the element's only content, otherwise gathered into scratch. Empty when
    // there is no text (or no element).
    QByteArrayView TextUtf8(QByteArray& scratch) const;
    bool SetText(const QString& text);
    // Appends a child element named tag and moves onto it.
    bool InsertChild(const QString& tag);
    // Removes the current element and moves onto its parent.
    bool Remove();
    // An identity of the element the cursor stands on, to tell whether a walk moved.
    struct Place {
        quint64 generation = 0;
        const void* node = nullptr;
        bool operator==(const Place&) const = default;
    };
    Place Position() const;
    // Changes whenever a streamed load moves on to another slice: text views taken from an
    // earlier one are then gone.
    quint64 Generation() const;
    // How many levels the cursor stands below the root element (0 on it, -1 when nowhere).
    int Depth() const;

private:
    // Whether at is a child of the root in a streamed load: the last one of a slice has its
    // next sibling in the next slice.
    bool IsSliceEnd(pugi::xml_node at) const;
    // On to the first element of the next slice that has one; false (the cursor in place)
    // at the end.
    bool NextSliceElement();

    DoxDocument* document;
    pugi::xml_node_struct* node = nullptr;
};

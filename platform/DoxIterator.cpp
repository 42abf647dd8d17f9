// The element walk over a DoxDocument, across the slices of a streamed load.

#include "platform/DoxDocument.h"
#include "platform/DoxNodes.h"

#include <pugixml.hpp>

DoxIterator::DoxIterator(DoxDocument* document) : document(document) {}

bool DoxIterator::Root() {
    if (!document || !document->doc) {
        return false;
    }
    pugi::xml_node root = document->doc->document_element();
    if (!root) {
        return false;
    }
    node = root.internal_object();
    return true;
}

bool DoxIterator::Child() {
    if (!node) {
        return false;
    }
    pugi::xml_node child = FirstElement(Wrap(node).first_child());
    if (!child) {
        return false;
    }
    node = child.internal_object();
    return true;
}

bool DoxIterator::ChildTail() {
    if (!node) {
        return false;
    }
    pugi::xml_node child = Wrap(node).last_child();
    while (child && child.type() != pugi::node_element) {
        child = child.previous_sibling();
    }
    if (!child) {
        return false;
    }
    node = child.internal_object();
    return true;
}

bool DoxIterator::Parent() {
    if (!node) {
        return false;
    }
    pugi::xml_node parent = Wrap(node).parent();
    if (!parent || parent.type() != pugi::node_element) {
        return false;
    }
    node = parent.internal_object();
    return true;
}

bool DoxIterator::NextSibling() {
    if (!node) {
        return false;
    }
    pugi::xml_node next = FirstElement(Wrap(node).next_sibling());
    if (!next) {
        return IsSliceEnd(Wrap(node)) && NextSliceElement();
    }
    node = next.internal_object();
    return true;
}

bool DoxIterator::IsSliceEnd(pugi::xml_node at) const {
    return document->stream && at.parent() == document->doc->document_element();
}

bool DoxIterator::NextSliceElement() {
    while (document->NextSlice()) {
        pugi::xml_node first = FirstElement(document->doc->document_element().first_child());
        if (first) {
            node = first.internal_object();
            return true;
        }
    }
    return false;
}

DoxIterator::Place DoxIterator::Position() const {
    return {document ? document->generation : 0, node};
}

quint64 DoxIterator::Generation() const {
    return document ? document->generation : 0;
}

bool DoxIterator::Next() {
    if (!node) {
        return false;
    }
    pugi::xml_node current = Wrap(node);
    if (pugi::xml_node child = FirstElement(current.first_child())) {
        node = child.internal_object();
        return true;
    }
    // Up until some ancestor has a following element; stop at the root element.
    for (pugi::xml_node at = current; at && at.type() == pugi::node_element; at = at.parent()) {
        if (pugi::xml_node next = FirstElement(at.next_sibling())) {
            node = next.internal_object();
            return true;
        }
        if (IsSliceEnd(at)) {
            return NextSliceElement();
        }
    }
    return false;
}

bool DoxIterator::GetTagName(QString& tag) const {
    if (!node) {
        return false;
    }
    tag = QString::fromUtf8(Wrap(node).name());
    return true;
}

QString DoxIterator::GetTagName() const {
    QString tag;
    GetTagName(tag);
    return tag;
}

bool DoxIterator::IsTag(const QByteArray& utf8Name) const {
    return node && utf8Name == Wrap(node).name();
}

bool DoxIterator::GetText(QString& text) const {
    if (!node) {
        return false;
    }
    pugi::xml_node n = Wrap(node);
    const char* own = n.value();  // the text, when it was the element's only content
    if (own && *own) {
        text = QString::fromUtf8(own);
        return true;
    }
    QByteArray all;
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling()) {
        if (c.type() == pugi::node_pcdata || c.type() == pugi::node_cdata) {
            all += c.value();
        }
    }
    text = QString::fromUtf8(all);
    return true;
}

QByteArrayView DoxIterator::TextUtf8(QByteArray& scratch) const {
    if (!node) {
        return {};
    }
    pugi::xml_node n = Wrap(node);
    const char* own = n.value();
    if (own && *own) {
        return QByteArrayView(own, static_cast<qsizetype>(std::strlen(own)));
    }
    scratch.clear();
    for (pugi::xml_node c = n.first_child(); c; c = c.next_sibling()) {
        if (c.type() == pugi::node_pcdata || c.type() == pugi::node_cdata) {
            scratch += c.value();
        }
    }
    return scratch;
}

QString DoxIterator::GetText() const {
    QString text;
    GetText(text);
    return text;
}

bool DoxIterator::SetText(const QString& text) {
    if (!node) {
        return false;
    }
    return Wrap(node).text().set(text.toUtf8().constData());
}

bool DoxIterator::InsertChild(const QString& tag) {
    if (!node) {
        return false;
    }
    pugi::xml_node child = Wrap(node).append_child(tag.toUtf8().constData());
    if (!child) {
        return false;
    }
    node = child.internal_object();
    return true;
}

bool DoxIterator::Remove() {
    if (!node) {
        return false;
    }
    pugi::xml_node current = Wrap(node);
    pugi::xml_node parent = current.parent();
    if (!parent || parent.type() != pugi::node_element) {
        return false;
    }
    parent.remove_child(current);
    node = parent.internal_object();
    return true;
}

int DoxIterator::Depth() const {
    if (!node) {
        return -1;
    }
    int depth = -1;
    for (pugi::xml_node at = Wrap(node); at && at.type() == pugi::node_element; at = at.parent()) {
        ++depth;
    }
    return depth;
}

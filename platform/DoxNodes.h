#pragma once

// Small helpers over pugixml's nodes shared by the document and its iterator; included by
// their .cpp files only.

#include <pugixml.hpp>

inline pugi::xml_node Wrap(pugi::xml_node_struct* n) {
    return pugi::xml_node(n);
}

// n itself when it is an element, else the first element among its next siblings.
inline pugi::xml_node FirstElement(pugi::xml_node n) {
    while (n && n.type() != pugi::node_element) {
        n = n.next_sibling();
    }
    return n;
}

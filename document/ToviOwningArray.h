#pragma once

#include "platform/ToviCheck.h"

#include <QtGlobal>

#include <algorithm>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

// An ordered array that owns its elements. Readers see plain pointers; only the owner's
// operations add, insert or remove, so nothing outside can drop or replace an element
// behind the owner's back.
template <typename T>
class ToviOwningArray {
    using Store = std::vector<std::unique_ptr<T>>;

public:
    // Iterates the elements as T*.
    class const_iterator {
    public:
        using iterator_category = std::random_access_iterator_tag;
        using value_type = T*;
        using difference_type = std::ptrdiff_t;
        using pointer = T* const*;
        using reference = T*;

        const_iterator() = default;
        explicit const_iterator(typename Store::const_iterator at) : at(at) {}
        T* operator*() const { return at->get(); }
        const_iterator& operator++() {
            ++at;
            return *this;
        }
        const_iterator operator++(int) { return const_iterator(at++); }
        bool operator==(const const_iterator& other) const = default;

    private:
        typename Store::const_iterator at;
    };

    ToviOwningArray() = default;
    ToviOwningArray(const ToviOwningArray&) = delete;
    ToviOwningArray& operator=(const ToviOwningArray&) = delete;
    ToviOwningArray(ToviOwningArray&&) noexcept = default;
    ToviOwningArray& operator=(ToviOwningArray&&) noexcept = default;
    ~ToviOwningArray() = default;

    qsizetype size() const { return static_cast<qsizetype>(items.size()); }
    bool isEmpty() const { return items.empty(); }
    // The element at index, which must be in range (checked: std::out_of_range).
    T* operator[](qsizetype index) const { return at(index); }
    T* at(qsizetype index) const {
        ToviCheckIndex(index, size(), "ToviOwningArray::at");
        return items[static_cast<size_t>(index)].get();
    }
    const_iterator begin() const { return const_iterator(items.cbegin()); }
    const_iterator end() const { return const_iterator(items.cend()); }

    void reserve(qsizetype count) { items.reserve(static_cast<size_t>(count)); }
    // Adopts element at the end (a null element is refused) and returns it.
    T* append(std::unique_ptr<T> element) {
        if (!element) {
            return nullptr;
        }
        items.push_back(std::move(element));
        return items.back().get();
    }
    // Adopts element before position (clamped to the ends) and returns it.
    T* insert(qsizetype position, std::unique_ptr<T> element) {
        if (!element) {
            return nullptr;
        }
        position = std::clamp<qsizetype>(position, 0, size());
        return items.insert(items.begin() + position, std::move(element))->get();
    }
    // Deletes every element.
    void clear() { items.clear(); }

private:
    Store items;
};

#include "extraction/ToviSorter.h"

#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "document/ToviPhotoRef.h"
#include "platform/Cp932.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <vector>

namespace {

// The one key that compares by number; every other key, dates included, compares as text.
const QString kNumericKey = QStringLiteral("シリアル番号");

// The C library's atoi reading: leading white space, an optional sign, then decimal digits,
// stopping at the first other character; no digits give 0. Only ASCII counts, so full-width
// digits and spaces end the number. Values beyond int are clamped rather than left undefined.
int LeadingNumber(const QString& text) {
    qsizetype i = 0;
    const qsizetype n = text.size();
    auto at = [&](qsizetype k) { return text.at(k).unicode(); };
    while (i < n && (at(i) == u' ' || (at(i) >= u'\t' && at(i) <= u'\r'))) {
        ++i;
    }
    bool negative = false;
    if (i < n && (at(i) == u'+' || at(i) == u'-')) {
        negative = at(i) == u'-';
        ++i;
    }
    long long value = 0;
    for (; i < n && at(i) >= u'0' && at(i) <= u'9'; ++i) {
        if (value <= static_cast<long long>(INT_MAX) + 1) {
            value = value * 10 + (at(i) - u'0');
        }
    }
    if (negative) {
        value = -value;
    }
    return static_cast<int>(std::clamp<long long>(value, INT_MIN, INT_MAX));
}

int CompareBytes(const QByteArray& a, const QByteArray& b) {
    const qsizetype common = std::min(a.size(), b.size());
    // memcmp compares as unsigned char, which is the code order wanted.
    const int n = common > 0 ? std::memcmp(a.constData(), b.constData(), common) : 0;
    if (n != 0) {
        return n < 0 ? -1 : 1;
    }
    return a.size() < b.size() ? -1 : (a.size() > b.size() ? 1 : 0);
}

// What the sort compares: the first 16 key bytes as two big-endian integers (zero-padded),
// the key's length and the photo index; the entry itself only for two long keys that agree
// on their first 16 bytes. A number is one biased integer, so that it orders as unsigned.
struct Rank {
    quint64 head = 0;
    quint64 tail = 0;
    qint32 size = 0;
    qint32 index = -1;
    const ToviSorter::Data* entry = nullptr;
};

constexpr qint32 kRankBytes = 16;

quint64 BigEndian(const char* bytes, qint32 size) {
    quint64 value = 0;
    for (qint32 i = 0; i < 8; ++i) {
        value = (value << 8) | (i < size ? static_cast<unsigned char>(bytes[i]) : 0U);
    }
    return value;
}

Rank MakeRank(const ToviSorter::Data& entry) {
    Rank rank;
    rank.index = entry.index;
    rank.entry = &entry;
    if (entry.numeric) {
        rank.head = static_cast<quint64>(static_cast<qint64>(entry.number)) ^ (1ULL << 63);
        return rank;
    }
    const char* bytes = entry.bytes.constData();
    rank.size = static_cast<qint32>(entry.bytes.size());
    rank.head = BigEndian(bytes, rank.size);
    rank.tail = rank.size > 8 ? BigEndian(bytes + 8, rank.size - 8) : 0;
    return rank;
}

// Equal heads and tails mean equal first 16 bytes (a zero byte of padding can't tell a short
// key from a longer one that goes on with zero bytes, which the length then settles): when
// either key fits in them, it is a prefix of the other and the shorter comes first.
bool RankLess(const Rank& a, const Rank& b) {
    if (a.head != b.head) {
        return a.head < b.head;
    }
    if (a.tail != b.tail) {
        return a.tail < b.tail;
    }
    if (a.size > kRankBytes && b.size > kRankBytes) {
        if (const int n = CompareBytes(a.entry->bytes, b.entry->bytes); n != 0) {
            return n < 0;
        }
    } else if (a.size != b.size) {
        return a.size < b.size;
    }
    return a.index < b.index;
}

}  // namespace

void ToviSorter::PrepareSort(const QString& key, const ToviPhotoRef& ref) {
    if (ref.IsEmpty()) {
        return;
    }
    array.clear();
    // An unknown title gives -1, which no item carries: every text is then empty and the
    // order falls back to the photo index.
    const int itemIndex = data ? data->GetItemDef()->GetIndexFromTitle(key) : -1;
    const bool numeric = key == kNumericKey;
    const QList<int>& indexes = ref.Indexes();
    array.reserve(indexes.size());
    for (qsizetype i = 0; i < indexes.size(); ++i) {
        Data entry;
        entry.index = indexes[i];
        const ToviPhoto* photo = data ? data->GetPhoto(static_cast<int>(i)) : nullptr;
        if (photo) {
            entry.text = photo->GetTitle(itemIndex);
        }
        entry.numeric = numeric;
        if (numeric) {
            entry.number = LeadingNumber(entry.text);
        } else {
            entry.bytes = Cp932::FromUnicode(entry.text);
        }
        array.append(std::move(entry));
    }
}

void ToviSorter::QuickSort(bool ascending, ToviPhotoRef& ref) {
    if (array.isEmpty()) {
        return;
    }
    // The entries are ordered through small fixed-size ranks kept side by side, so that the
    // sort neither moves the entries nor follows a pointer for most comparisons.
    std::vector<Rank> ranks;
    ranks.reserve(static_cast<size_t>(array.size()));
    for (const Data& entry : array) {
        ranks.push_back(MakeRank(entry));
    }
    // RankLess gives the order of CompareUp and stays a strict weak order even for an index
    // that stands twice, which std::sort needs to stay in bounds; descending swaps the sides.
    if (ascending) {
        std::sort(ranks.begin(), ranks.end(),
                  [](const Rank& a, const Rank& b) { return RankLess(a, b); });
    } else {
        std::sort(ranks.begin(), ranks.end(),
                  [](const Rank& a, const Rank& b) { return RankLess(b, a); });
    }
    QList<int> sorted;
    sorted.reserve(array.size());
    for (const Rank& rank : ranks) {
        // The current array is a set: an index that stood twice (same photograph, same key,
        // so its entries end side by side) keeps one place, as adding them one by one would.
        if (!sorted.isEmpty() && sorted.constLast() == rank.index) {
            continue;
        }
        sorted.append(rank.index);
    }
    ref.Assign(sorted);
}

int ToviSorter::CompareKeys(const Data& a, const Data& b) {
    if (a.numeric) {
        return a.number == b.number ? 0 : (a.number > b.number ? 1 : -1);
    }
    return CompareBytes(a.bytes, b.bytes);
}

int ToviSorter::CompareUp(const Data& a, const Data& b) {
    if (const int keys = CompareKeys(a, b); keys != 0) {
        return keys;
    }
    return a.index < b.index ? -1 : 1;
}

int ToviSorter::CompareDown(const Data& a, const Data& b) {
    if (const int keys = CompareKeys(a, b); keys != 0) {
        return -keys;
    }
    return a.index < b.index ? 1 : -1;
}

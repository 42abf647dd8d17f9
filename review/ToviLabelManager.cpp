#include "review/ToviLabelManager.h"

#include "platform/ToviCheck.h"
#include "platform/ToviProfile.h"

const QString ToviLabelManager::LabelSection_ = QStringLiteral("Label");
const QString ToviLabelManager::LabelEntry_ = QStringLiteral("Label");

namespace {

struct DefaultLabel {
    quint32 color;  // 0x00BBGGRR
    const char* name;
};

constexpr DefaultLabel kDefaults[] = {
    {0x0000FF, "OK"},        // red
    {0xFF0000, "追記"},      // blue
    {0x00FFFF, "誤記"},      // yellow
    {0x00FF00, "不鮮明"},    // green
    {0xFF00FF, "コメント"},  // magenta
    {0xFFFF00, "印刷"},      // cyan
};

QString Entry(int index) {
    return ToviLabelManager::LabelEntry_ + QString::number(index + 1);
}

}  // namespace

static_assert(std::size(kDefaults) == 6);

ToviLabelManager::ToviLabelManager() {
    Initialize();
}

ToviLabelManager::ToviLabelManager(const ToviLabelAttribute* source) {
    if (source) {
        SetLabelAttribute(source);
    } else {
        Initialize();
    }
}

ToviLabelManager::ToviLabelManager(const ToviLabelManager& other) : labels(other.labels) {}

ToviLabelManager& ToviLabelManager::operator=(const ToviLabelManager& other) {
    if (this != &other) {
        labels = other.labels;
    }
    return *this;
}

ToviLabelManager::~ToviLabelManager() {
    // Every manager writes its names when it goes, copies included; intended, so that the
    // last vocabulary to go is the one the next session reads.
    ToviLabelManager::Save();
}

void ToviLabelManager::Save(const QString&) const {
    ToviProfile& profile = ToviProfile::Instance();
    for (int i = 0; i < kCount; ++i) {
        // A store that can't be written loses the names; nothing to tell anyone about.
        profile.WriteProfileString(LabelSection_, Entry(i), labels[i].GetName());
    }
}

void ToviLabelManager::Load(const QString&) {
    const ToviProfile& profile = ToviProfile::Instance();
    for (int i = 0; i < kCount; ++i) {
        const QString name =
            profile.GetProfileString(LabelSection_, Entry(i), ToviLabelAttribute::UndefinedName_);
        if (!name.isEmpty() && name != ToviLabelAttribute::UndefinedName_) {
            labels[i].SetName(name);
        }
    }
}

void ToviLabelManager::Initialize() {
    for (int i = 0; i < kCount; ++i) {
        labels[i] = DefaultAttribute(i);
    }
}

void ToviLabelManager::SetLabelAttribute(const ToviLabelAttribute* source) {
    if (!source) {
        return;
    }
    for (int i = 0; i < kCount; ++i) {
        labels[i] = source[i];
    }
}

ToviLabelAttribute& ToviLabelManager::GetLabelAttribute(unsigned long index) {
    if (index >= static_cast<unsigned long>(kCount)) {
        ToviThrowOutOfRange("ToviLabelManager::GetLabelAttribute");
    }
    return labels[index];
}

const ToviLabelAttribute& ToviLabelManager::GetLabelAttribute(unsigned long index) const {
    if (index >= static_cast<unsigned long>(kCount)) {
        ToviThrowOutOfRange("ToviLabelManager::GetLabelAttribute");
    }
    return labels[index];
}

ToviLabelAttribute ToviLabelManager::DefaultAttribute(unsigned long index) {
    if (index >= static_cast<unsigned long>(kCount)) {
        ToviThrowOutOfRange("ToviLabelManager::DefaultAttribute");
    }
    return ToviLabelAttribute(kDefaults[index].color, QString::fromUtf8(kDefaults[index].name));
}

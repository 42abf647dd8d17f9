// READITEM.XML in: the item definitions are read from the fuzzed file (through the program
// path override the tests use) and a delivery written by the delivery writer is walked
// against them, so the definitions are both parsed and used. The first byte picks the family
// (its value modulo 4) and with it the delivery: 国交省-20 for 0 and 1, 農水省-23 for 2,
// NEXCO-24 for 3, written by tovi-fuzz-seeds into fuzz/deliveries/<family>/; the rest is
// the file.
#include "FuzzSupport.h"
#include "SilentHost.h"

#include "document/ToviData.h"
#include "loading/ToviEnouDataFactory.h"

#include <memory>
#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    static SilentHost host;
    static const QString deliveries = [] {
        const QString work = fuzz::WorkFolder().path();
        ToviItemDef::SetProgramPathOverride(work);
        const QString folder = MibProgramPath() + QStringLiteral("../fuzz/deliveries/");
        if (!MibIsFileExist(folder + QStringLiteral("0/PHOTO.XML"))) {
            qFatal("fuzz_readitem: no deliveries in %s (tovi-fuzz-seeds writes them)",
                   qPrintable(folder));
        }
        return folder;
    }();
    if (!fuzz::WriteInput(fuzz::WorkPath(QStringLiteral("READITEM.XML")), data + 1, size - 1)) {
        return 0;
    }
    const int family = data[0] % 4;
    const QString folder = deliveries + QString::number(family == 1 ? 0 : family);
    ToviEnouDataFactory factory;
    try {
        const std::unique_ptr<ToviData> document =
            factory.Create(&host, folder, static_cast<PhotoXMLType>(family));
    } catch (const std::out_of_range&) {
        // A list whose steps don't balance walks off its end: the documented answer, which
        // the command line turns into a message.
    }
    return 0;
}

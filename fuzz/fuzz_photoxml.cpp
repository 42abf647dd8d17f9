// PHOTO.XML in, a document out: the delivery reader walks the file against the item
// definitions beside the program, the document is read back as `tovi info --json` reads it,
// and the delivery checks that read no image run over it. The first byte picks the family
// (its value modulo 4), the rest is the file; each seed starts with the family of its
// generation.
#include "FuzzSupport.h"
#include "SilentHost.h"

#include "checks/ToviDeliveryChecker.h"
#include "document/ToviData.h"
#include "document/ToviPhoto.h"
#include "imagefacts/ToviControlValueArray.h"
#include "loading/ToviEnouDataFactory.h"

#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    static SilentHost host;
    static const QString folder = fuzz::WorkFolder().path();
    if (!fuzz::WriteInput(fuzz::WorkPath(QStringLiteral("PHOTO.XML")), data + 1, size - 1)) {
        return 0;
    }
    const auto type = static_cast<PhotoXMLType>(data[0] % 4);
    ToviEnouDataFactory factory;
    // No try: with the shipped READITEM.XML nothing a PHOTO.XML holds may throw.
    const std::unique_ptr<ToviData> document = factory.Create(&host, folder, type);
    if (!document) {
        return 0;
    }
    document->Load();
    const ToviItemDef* def = document->GetItemDef();
    QString sink;
    for (const ToviItem& item : *document->GetMngItemPhoto()) {
        sink = def->GetTitleFromIndex(item.GetDefIndex()) + item.Value();
    }
    for (int i = 0; i < document->GetTotalCountPhoto(); ++i) {
        ToviPhoto* photo = document->GetPhotoActualPhotoArray(i);
        for (const ToviItem& item : photo->GetItems()) {
            sink = def->GetTitleFromIndex(item.GetDefIndex()) + item.Value();
        }
        ToviControlValueArray rows;
        photo->GetControlValueArray(rows);
        sink = photo->GetImagePath();
    }
    ToviFindingCollector findings;
    ToviDeliveryChecker::Standard(false)->Run(*document, findings);
    return 0;
}

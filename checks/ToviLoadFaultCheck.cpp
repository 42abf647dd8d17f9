#include "checks/ToviLoadFaultCheck.h"

#include "checks/ToviCheckContext.h"
#include "document/ToviData.h"

namespace {

const char kPhotoDropped[] = "load.photo-dropped";
const char kBlockDropped[] = "load.block-dropped";
const char kUndecodable[] = "load.undecodable";

QString SerialPart(const QString& serial) {
    return serial.isEmpty() ? QStringLiteral("（シリアル番号なし）")
                            : QStringLiteral("（シリアル番号 %1）").arg(serial);
}

}  // namespace

QList<const char*> ToviLoadFaultCheck::Codes() const {
    return {kPhotoDropped, kBlockDropped, kUndecodable};
}

void ToviLoadFaultCheck::Finish(ToviCheckContext& context, ToviFindingSink& sink) {
    const ToviData::LoadFaults& faults = context.Document().GetLoadFaults();
    int photosListed = 0;
    int blocksListed = 0;
    for (const ToviData::LoadFaults::Dropped& d : faults.dropped) {
        if (d.block.isEmpty()) {
            ++photosListed;
            sink.Add(ToviCheckFinding::Of(
                kPhotoDropped, ToviCheckFinding::Error, -1, d.missing,
                QStringLiteral("%1番目の写真情報%2に必須の要素「%3」がないため、"
                               "この写真は読み込まれていません")
                    .arg(d.ordinal)
                    .arg(SerialPart(d.serial), d.missing)));
        } else if (d.ordinal > 0) {
            blocksListed += d.occurrences;
            sink.Add(ToviCheckFinding::Of(
                kBlockDropped, ToviCheckFinding::Error, d.index, d.missing,
                QStringLiteral("%1番目の写真情報%2の「%3」に必須の要素「%4」がない"
                               "ため、その「%3」は読み込まれていません")
                    .arg(d.ordinal)
                    .arg(SerialPart(d.serial), d.block, d.missing)));
        } else {
            blocksListed += d.occurrences;
            sink.Add(ToviCheckFinding::Of(
                kBlockDropped, ToviCheckFinding::Error, -1, d.missing,
                QStringLiteral("写真情報の外の「%1」に必須の要素「%2」がないため、"
                               "その「%1」は読み込まれていません")
                    .arg(d.block, d.missing)));
        }
    }
    // Past the entries kept in full, one finding for the rest.
    if (faults.droppedPhotoCount > photosListed) {
        sink.Add(ToviCheckFinding::Of(
            kPhotoDropped, ToviCheckFinding::Error, -1, QString(),
            QStringLiteral("ほかに %1 枚の写真が、必須の要素がないため読み込まれて"
                           "いません")
                .arg(faults.droppedPhotoCount - photosListed)));
    }
    if (faults.droppedBlockCount > blocksListed) {
        sink.Add(ToviCheckFinding::Of(
            kBlockDropped, ToviCheckFinding::Error, -1, QString(),
            QStringLiteral("ほかに %1 個の繰り返し要素が、必須の要素がないため読み"
                           "込まれていません")
                .arg(faults.droppedBlockCount - blocksListed)));
    }
    if (faults.undecodableValues > 0) {
        sink.Add(ToviCheckFinding::Of(
            kUndecodable, ToviCheckFinding::Warning, -1, QString(),
            QStringLiteral("PHOTO.XML の %1 個の値に、宣言された文字コードで読めない"
                           "バイトがあり、その部分を「\uFFFD」に置き換えて読み込み"
                           "ました")
                .arg(faults.undecodableValues)));
    }
}

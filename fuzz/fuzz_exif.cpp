// Image bytes in, Exif text out: every field the viewer shows, and the size the header states.
#include "FuzzSupport.h"

#include "platform/LumImage.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // The reader keeps the facts of the last file it read, known by path and file stamp. Two
    // names taken in turn make every input a fresh read, however fast the inputs come.
    static const QString names[2] = {fuzz::WorkPath(QStringLiteral("a.jpg")),
                                     fuzz::WorkPath(QStringLiteral("b.jpg"))};
    static int turn = 0;
    turn = 1 - turn;
    const QString& path = names[turn];
    if (!fuzz::WriteInput(path, data, size)) {
        return 0;
    }
    QString text;
    for (int code = 0; code < LumCmntCount; ++code) {
        LumImage::GetComment(path, code, text);
    }
    int width = 0;
    int height = 0;
    LumImage::GetCommentImageSize(path, width, height);
    return 0;
}

// tovi-makedelivery: writes an electronic delivery of any PHOTO.XML generation.
//   tovi-makedelivery --sample OUT
//   tovi-makedelivery OUT [--generation 国交省-18] [--count 1000] [--seed 7]
//                         [--images none|tiny|boards] [--size 640x480]

#include <QCommandLineParser>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QRegularExpression>

#include <cstdio>

#include "tests/support/DeliveryWriter.h"

namespace {

int Fail(const QString& message) {
    std::fprintf(stderr, "tovi-makedelivery: %s\n", message.toLocal8Bit().constData());
    return 1;
}

}  // namespace

int main(int argc, char* argv[]) {
    // Drawing the boards needs a GUI application; without a display the offscreen platform
    // serves, and it is what the build uses.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QGuiApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tovi-makedelivery"));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Writes an electronic delivery (INDEX_C/PHOTO) for tests and samples."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("OUT"),
                                 QStringLiteral("Folder that receives INDEX_C/."));
    const QCommandLineOption sample(QStringLiteral("sample"),
                                    QStringLiteral("Write the bundled sample delivery."));
    const QCommandLineOption generation(
        QStringLiteral("generation"),
        QStringLiteral("国交省-11/14/16/18/20, 農水省-15/17/23, NEXCO-14/18/24 (or mlit-20 ...)."),
        QStringLiteral("name"), QStringLiteral("国交省-20"));
    const QCommandLineOption count(QStringLiteral("count"), QStringLiteral("Photographs."),
                                   QStringLiteral("n"), QStringLiteral("60"));
    const QCommandLineOption seed(QStringLiteral("seed"), QStringLiteral("Seed."),
                                  QStringLiteral("n"), QStringLiteral("1"));
    const QCommandLineOption images(QStringLiteral("images"),
                                    QStringLiteral("none, tiny or boards."), QStringLiteral("kind"),
                                    QStringLiteral("boards"));
    const QCommandLineOption size(QStringLiteral("size"),
                                  QStringLiteral("Photograph size for boards, WxH."),
                                  QStringLiteral("WxH"), QStringLiteral("640x480"));
    parser.addOptions({sample, generation, count, seed, images, size});
    if (!parser.parse(QCoreApplication::arguments())) {
        return Fail(parser.errorText());
    }
    if (parser.isSet(QStringLiteral("help"))) {
        parser.showHelp(0);
    }
    const QStringList positional = parser.positionalArguments();
    if (positional.size() != 1) {
        return Fail(QStringLiteral("give exactly one output folder (see --help)"));
    }
    const QString out = positional.first();

    DeliveryOptions options;
    if (parser.isSet(sample)) {
        // The bundled sample: one ordinary current-standard delivery to look at.
        options.generation = Generation::Mlit20;
        options.photoCount = 60;
        options.seed = 20240401;
        options.images = DeliveryOptions::Images::Boards;
        // 1.2 million pixels: within the 100万～300万画素 the current standard asks of a photograph.
        options.imageSize = QSize(1280, 960);
        options.drawingShare = 0.25;
    } else {
        if (!GenerationFromName(parser.value(generation), &options.generation)) {
            return Fail(QStringLiteral("unknown generation \"%1\"").arg(parser.value(generation)));
        }
        bool ok = false;
        options.photoCount = parser.value(count).toInt(&ok);
        if (!ok || options.photoCount < 1) {
            return Fail(QStringLiteral("--count needs a positive number"));
        }
        options.seed = parser.value(seed).toUInt(&ok);
        if (!ok) {
            return Fail(QStringLiteral("--seed needs a number from 0 to 4294967295"));
        }
        const QString kind = parser.value(images).toLower();
        if (kind == QLatin1String("none")) {
            options.images = DeliveryOptions::Images::None;
        } else if (kind == QLatin1String("tiny")) {
            options.images = DeliveryOptions::Images::Tiny;
        } else if (kind == QLatin1String("boards")) {
            options.images = DeliveryOptions::Images::Boards;
        } else {
            return Fail(QStringLiteral("--images must be none, tiny or boards"));
        }
        const QRegularExpressionMatch m =
            QRegularExpression(QStringLiteral("^(\\d+)[xX](\\d+)$")).match(parser.value(size));
        if (!m.hasMatch()) {
            return Fail(QStringLiteral("--size must look like 640x480"));
        }
        options.imageSize = QSize(m.captured(1).toInt(), m.captured(2).toInt());
    }

    QElapsedTimer timer;
    timer.start();
    QString error;
    if (!WriteDelivery(out, options, nullptr, &error)) {
        return Fail(error);
    }
    std::printf("tovi-makedelivery: wrote %d photographs (%s) to %s in %.1f s\n",
                options.photoCount, SectionName(options.generation).toLocal8Bit().constData(),
                (out + QStringLiteral("/INDEX_C/PHOTO")).toLocal8Bit().constData(),
                static_cast<double>(timer.elapsed()) / 1000.0);
    return 0;
}

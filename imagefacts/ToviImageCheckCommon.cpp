#include "imagefacts/ToviImageCheckCommon.h"

#include "imagefacts/ToviJacicImageChecker.h"
#include "imagefacts/ToviRicohImageChecker.h"

ToviImageCheckCommon::ToviImageCheckCommon(const QString& file) : file(file) {}

ToviImageCheckCommon::~ToviImageCheckCommon() = default;

void ToviImageCheckCommon::SetCheckCameraType(const QList<int>& types) {
    processors.clear();
    for (const int type : types) {
        std::unique_ptr<ToviCheckProcessor> processor;
        switch (type) {
            case CameraRicohG600:
                processor = std::make_unique<ToviRicohImageChecker>();
                break;
            case CameraBlackboard:
            case CameraRicohG900:
                processor = std::make_unique<ToviJacicImageChecker>();
                break;
            default:
                continue;
        }
        if (processor->IsEnableDLL() && processor->Initiate()) {
            processors.push_back(std::move(processor));
        }
    }
}

void ToviImageCheckCommon::SetFile(const QString& path) {
    if (file.compare(path, Qt::CaseInsensitive) != 0) {
        file = path;
    }
}

ToviCheckProcessor::CheckStatus ToviImageCheckCommon::CheckProcessedImage(bool* claimed) {
    if (claimed) {
        *claimed = false;
    }
    if (processors.empty()) {
        return ToviCheckProcessor::StatusError;
    }
    ToviCheckProcessor::CheckStatus last = ToviCheckProcessor::StatusError;
    for (const auto& processor : processors) {
        if (!processor->IsTarget(file)) {
            continue;
        }
        if (claimed) {
            *claimed = true;
        }
        last = processor->Check(file);
        if (last == ToviCheckProcessor::StatusUnaltered ||
            last == ToviCheckProcessor::StatusAltered) {
            return last;
        }
        if (last == ToviCheckProcessor::StatusOutsideTarget &&
            !processor->IsContinueOutsideTarget()) {
            return last;
        }
    }
    return last;
}

ToviImageCheckCommon::CameraType ToviImageCheckCommon::QueryCameraType(int index) {
    switch (index) {
        case 0:
            return CameraRicohG600;
        case 1:
            return CameraRicohG900;
        default:
            return CameraBlackboard;
    }
}

QString ToviImageCheckCommon::QueryCameraName(const CameraType& type) {
    switch (type) {
        case CameraRicohG600:
            return QStringLiteral("RICOH G800/G700/G600");
        case CameraRicohG900:
            return QStringLiteral("RICOH G900");
        case CameraBlackboard:
            return QStringLiteral("小黒板電子化");
    }
    return QString();
}

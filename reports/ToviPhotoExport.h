#pragma once

#include <QString>
#include <QStringList>

#include <functional>

class LumImage;
class QWidget;
class ToviData;
class ToviPhoto;

// The folder photographs were last saved to in this run of the program; empty at the start
// and never stored.
QString GetOutputPhotoFolder();
void SetOutputPhotoFolderPath(const QString& folder);

// Saving photographs out of a delivery: those of the current view into a folder, or one under
// a chosen name. A delivered file is copied byte for byte with its permissions and file times;
// only the save from a correction window may write the corrected picture instead. Questions
// and messages go through the installed ToviUi.
class ToviPhotoExport {
public:
    struct Counts {
        bool done = false;  // false when the folder dialog was cancelled
        int count = 0;      // photographs in the view
        int copied = 0;
        int failed = 0;
    };

    static const QString SlideModeMessage_;  // "スライドモード中は写真の保存ができません。"
    static const QString NoPhotoMessage_;  // "出力可能な写真がありませんでした。"
    static const QString NothingToSaveMessage_;  // "保存可能な写真がありません。"
    static const QString SavedMessage_;          // "保存に成功しました。"
    static const QString SaveFailedMessage_;     // "保存に失敗しました。"
    static const QString ConflictMessage_;       // a file of an output name is in the folder
    static const QString FolderTitle_;           // "フォルダの選択"
    static const QString ChoiceDialogName_;      // "ToviSelectOutputPhotoDlg"
    static const QString WorkedModeField_;       // its bool: save the corrected picture
    // The final message of OutputAllPhoto for count, copied and failed.
    static QString DoneMessage(int count, int copied, int failed);

    explicit ToviPhotoExport(ToviData& document, QWidget* parent = nullptr);

    // The save button: refused in slide mode; one photograph in view is saved under a chosen
    // name, any other number into a chosen folder.
    void OutputPhotos(bool slideMode);
    // Every photograph of the current view into a folder the user chooses, under its
    // 写真ファイル名. A folder holding a file of any of those names is refused and another
    // asked for; nothing is ever overwritten.
    Counts OutputAllPhoto();
    // The first photograph of the view under a name the user chooses. True when it was copied.
    bool OutputOnePhoto();
    // The save of a correction window for photo (null when the window has none; checkPhoto
    // makes that an error to tell): when the picture was changed (turned or brightened) and
    // is shown, the user chooses between saving the corrected picture as a JPEG, which loses
    // the Exif, and copying the delivered file. True when something was saved.
    bool SaveFromCorrection(ToviPhoto* photo, const LumImage& corrected, bool changed, bool shown,
                            bool slideMode, bool checkPhoto);
    // The same, with the corrected picture made only when the user chose to save it (a
    // correction window decodes the whole photograph for it).
    bool SaveFromCorrection(ToviPhoto* photo, const std::function<LumImage()>& corrected,
                            bool changed, bool shown, bool slideMode, bool checkPhoto);

private:
    // The save-file dialog for photo proposing its name in the output folder; empty when
    // cancelled.
    QString AskFileName(const ToviPhoto& photo) const;
    // Tells the outcome of a one-file save and keeps the chosen folder.
    bool Finish(const QString& path, bool saved) const;
    QString FileNameOf(const ToviPhoto& photo) const;

    ToviData& document;
    QWidget* parent;
};

// The conversions of SVG photographs that viewing needs, written into the viewer's work folder
// (the suite folder's "QVフォトビューアー", made when missing) and kept there for later runs.
// A thumbnail JPEG of at most 128 x 128 for the drawing; outPath is set to where it belongs.
// An existing file there is used as it stands. False when it neither exists nor can be made.
bool ToviSvgThumbnail(const QString& svgPath, QString& outPath);
// An HTML page that shows the drawing, made only when it is not there yet; htmlPath is set to
// where it belongs. False when it neither exists nor can be made.
bool ToviSvgToHtml(const QString& svgPath, QString& htmlPath);

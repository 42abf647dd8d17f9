#pragma once

#include <QDialog>
#include <QVariantMap>

class QRadioButton;

// 写真保存: asked before a corrected picture is saved, whether the correction goes into the
// file (which loses the Exif) or the delivered file is copied as it stands.
class ToviSelectOutputPhotoDlg : public QDialog {
    Q_OBJECT
public:
    explicit ToviSelectOutputPhotoDlg(QWidget* parent = nullptr);

    static QString Name();
    // Runs the dialog; on 保存 the choice is put in values under the export's worked-mode
    // field (true: save the correction).
    static bool Run(QWidget* parent, QVariantMap& values);

    bool IsSelectedWorkedPhotoMode() const;
    QRadioButton* WorkedChoice() const { return worked; }
    QRadioButton* OriginalChoice() const { return original; }

private:
    QRadioButton* worked;
    QRadioButton* original;
};

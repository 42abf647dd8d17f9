#pragma once

#include <QDialog>
#include <QVariantMap>

class QLineEdit;
class QListWidget;

// 次のデータを開く: asks for the folder of the next disc of a delivery, listing the files
// still missing. OK stays in the dialog until the folder holds a PHOTO.XML.
class OpenNextDataDlg : public QDialog {
    Q_OBJECT
public:
    // The fields as the media combine hands them over (OpenNextDataTexts).
    OpenNextDataDlg(QWidget* parent, const QVariantMap& values);

    static QString Name();
    // Runs the dialog; on OK the chosen folder is put in values.
    static bool Run(QWidget* parent, QVariantMap& values);

    QString Folder() const;

public slots:
    void accept() override;

private:
    void Browse();

    QLineEdit* folder;
    QListWidget* missing;
};

#pragma once

#include <QDialog>

class QTextBrowser;
class ToviData;

// The delivery's index file as its stylesheet shows it: the work's summary, the media and the
// folders. Only the page itself is shown; nothing it links to is read.
class ToviIndexPageDlg : public QDialog {
    Q_OBJECT

public:
    explicit ToviIndexPageDlg(QWidget* parent = nullptr);

    // Makes the page of the document's index file; false, after one message saying why, when
    // there is none to show.
    bool SetData(ToviData* data);
    QTextBrowser* Browser() const { return browser; }

protected:
    void done(int result) override;

private:
    QTextBrowser* browser;
};

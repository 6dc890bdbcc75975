#include <QDrag>
#include <QGuiApplication>
#include <QMimeData>
#include <QMouseEvent>
#include <QRasterWindow>
#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

/// In the upper left corner of the screen: the files of the command line, to be dragged out of it.
class Source : public QRasterWindow
{
public:
    Source()
    {
        setTitle(u"Files"_s);
        setFlag(Qt::FramelessWindowHint);
        setGeometry(0, 0, 80, 80);
    }

protected:
    void mousePressEvent(QMouseEvent *) override
    {
        QList<QUrl> urls;
        for (const QString &file : QCoreApplication::arguments().mid(1))
            urls.append(QUrl::fromLocalFile(file));
        auto *files = new QMimeData;
        files->setUrls(urls);
        auto *drag = new QDrag(this); // ends itself
        drag->setMimeData(files);
        drag->exec(Qt::CopyAction);
    }
};

} // namespace

/// A file manager as far as dragging goes. It does not end by itself: who takes the files asks it for them
/// later.
int main(int argc, char **argv)
{
    QGuiApplication application(argc, argv);
    Source source;
    source.show();
    return QGuiApplication::exec();
}

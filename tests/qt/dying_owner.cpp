// Owns the clipboard of an X server and dies when somebody asks for what is on
// it.
//
//   dying_owner formats | data | nothing      says "ready" when it owns the clipboard
#include <signal.h>
#include <unistd.h>

#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QTimer>
#include <cstdio>

namespace {

class Picture final : public QMimeData {
  public:
    explicit Picture(QString end) : end_(std::move(end)) {}
    bool isReady = false;

    QStringList formats() const override {
        if (isReady && end_ == QLatin1String("formats")) ::raise(SIGKILL);
        return {QStringLiteral("image/png")};
    }
    bool hasFormat(const QString& format) const override { return formats().contains(format); }

  protected:
    QVariant retrieveData(const QString& /*format*/, QMetaType /*type*/) const override {
        if (end_ == QLatin1String("data")) ::raise(SIGKILL);
        QImage image(30, 20, QImage::Format_RGBA8888);
        image.fill(Qt::red);
        QByteArray bytes;
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::WriteOnly);
        image.save(&buffer, "PNG");
        return bytes;
    }

  private:
    QString end_;
};

}  // namespace

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    auto* picture = new Picture(application.arguments().value(1));
    QGuiApplication::clipboard()->setMimeData(picture);
    QTimer::singleShot(0, &application, [picture] {
        picture->isReady = true;
        std::puts("ready");
        std::fflush(stdout);
    });
    return application.exec();
}

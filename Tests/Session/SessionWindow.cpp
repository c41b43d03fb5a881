// session-window NAME: shows a window of an application with that name, until it is ended.

#include <QGuiApplication>
#include <QRasterWindow>
#include <cstdio>

int main(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    if (argc != 2) {
        std::fputs("usage: session-window NAME\n", stderr);
        return 2;
    }
    QGuiApplication::setApplicationName(argv[1]);
    QGuiApplication::setDesktopFileName(argv[1]);
    QRasterWindow window;
    window.resize(200, 100);
    window.show();
    return QGuiApplication::exec();
}

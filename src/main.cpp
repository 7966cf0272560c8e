#include "app/application.h"

int main(int argc, char** argv) {
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    Application app(argc, argv);
    app.parseArguments(app.arguments());
    return app.exec();
}

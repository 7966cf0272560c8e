#include "widgets/framelessgroupbox.h"

FramelessGroupBox::FramelessGroupBox(const QString& title, QWidget* parent)
    : QGroupBox(title, parent) {
    setStyleSheet(QStringLiteral("FramelessGroupBox {\n"
                                 "border: none;\n"
                                 "}\n"));
}

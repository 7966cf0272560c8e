#include "widgets/titlelessgroupbox.h"

TitlelessGroupBox::TitlelessGroupBox(QWidget* parent) : QGroupBox(parent) {
    setStyleSheet(QStringLiteral("TitlelessGroupBox {\n"
                                 "margin-top: 0px;\n"
                                 "padding: 6px;\n"
                                 "}\n"));
}

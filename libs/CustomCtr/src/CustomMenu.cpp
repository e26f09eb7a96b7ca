#include "CustomMenu.h"

#include "Custom.h"

CustomMenu::CustomMenu(QWidget* parent)
    : CustomMenu(QString(), parent)
{
}

CustomMenu::CustomMenu(const QString& title, QWidget* parent)
    : QMenu(title, parent)
    , CustomObject(this, QStringLiteral("CustomMenu"))
{
    cSetBaseStyleSheet(Custom::defaultStyleSheet());
}

CustomMenu::~CustomMenu() = default;

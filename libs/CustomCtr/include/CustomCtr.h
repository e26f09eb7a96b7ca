#pragma once

// Every public class of the widget library.
#include "Custom.h"
#include "CustomCheckHeaderView.h"
#include "CustomComboBox.h"
#include "CustomLabel.h"
#include "CustomListWidget.h"
#include "CustomMainWindow.h"
#include "CustomMenu.h"
#include "CustomMessageBox.h"
#include "CustomObject.h"
#include "CustomPushButton.h"
#include "CustomTableWidget.h"
#include "CustomTitleBar.h"

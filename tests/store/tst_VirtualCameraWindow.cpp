// The window's right half against a real store: "Add" and "Delete" from the
// list's context menu, and the refusal while a serving program holds the camera.

#include "QtPrinters.h"
#include "TestFiles.h"
#include "AppFolders.h"
#include "CustomComboBox.h"
#include "CustomListWidget.h"
#include "CustomMessageBox.h"
#include "CustomPushButton.h"
#include "QVirtualCamMainWidget.h"
#include "StorePaths.h"
#include "camera_hold.h"

#include <QAction>
#include <QContextMenuEvent>
#include <QLabel>
#include <QMenu>
#include <QPointer>
#include <QRegularExpression>
#include <QSettings>
#include <QtTest>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace {

constexpr int kGroupRole = Qt::UserRole + 2;

// Runs handler on the next pop-up menu or modal dialog once it is shown;
// both run their own event loop, so the answer has to come from a timer.
void WhenShown(std::function<QWidget*()> find, std::function<void(QWidget*)> handler, int nTriesLeft = 200)
{
    QTimer::singleShot(10, [=]() {
        if (QWidget* pWidget = find(); pWidget && pWidget->isVisible()) {
            handler(pWidget);
            return;
        }
        if (nTriesLeft > 0)
            WhenShown(find, handler, nTriesLeft - 1);
    });
}

QWidget* ActivePopup()
{
    return QApplication::activePopupWidget();
}

QWidget* ActiveModal()
{
    return QApplication::activeModalWidget();
}

// Answers the next message box with its confirm button and keeps its text.
void ConfirmNextMessageBox(QString* pText)
{
    WhenShown(ActiveModal, [pText](QWidget* pBox) {
        if (auto* pLabel = pBox->findChild<QLabel*>("MessageText"))
            *pText = pLabel->text();
        if (auto* pButton = pBox->findChild<QAbstractButton*>("ConfirmBtn"))
            pButton->click();
        else
            pBox->close();
    });
}

} // namespace

class VirtualCameraWindowTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
    std::unique_ptr<QVirtualCamMainWidget> m_pWindow;
    CustomComboBox* Selector() const { return m_pWindow->findChild<CustomComboBox*>(); }
    CustomListWidget* List() const { return m_pWindow->findChild<CustomListWidget*>(); }
    CustomPushButton* AddButton() const
    {
        for (CustomPushButton* pButton : m_pWindow->findChildren<CustomPushButton*>())
            if (pButton->text() == "Add")
                return pButton;
        return nullptr;
    }
    void OpenWindow()
    {
        m_pWindow = std::make_unique<QVirtualCamMainWidget>();
        ASSERT_TRUE(m_pWindow->Init());
        ASSERT_TRUE(Selector() && List() && AddButton());
    }
    QStringList ListTexts() const
    {
        QStringList texts;
        for (int nRow = 0; nRow < List()->count(); ++nRow)
            texts << List()->item(nRow)->text();
        return texts;
    }
    // Right-clicks the list's empty space and picks "Delete" from the menu;
    // false if no menu came up.
    bool DeleteThroughContextMenu()
    {
        bool bMenuShown = false;
        WhenShown(ActivePopup, [&bMenuShown](QWidget* pPopup) {
            bMenuShown = true;
            auto* pMenu = qobject_cast<QMenu*>(pPopup);
            QAction* pDelete = nullptr;
            for (QAction* pAction : pMenu ? pMenu->actions() : QList<QAction*>())
                if (pAction->text() == "Delete")
                    pDelete = pAction;
            // A click hides the menu first, then triggers the action.
            pPopup->hide();
            if (pDelete)
                pDelete->trigger();
        }, 20);
        QWidget* pViewport = List()->viewport();
        const QPoint pos(5, pViewport->height() - 5);
        QContextMenuEvent event(QContextMenuEvent::Mouse, pos, pViewport->mapToGlobal(pos));
        QApplication::sendEvent(pViewport, &event);
        // Let a pending answer timer run out when no menu came.
        QTest::qWait(bMenuShown ? 0 : 300);
        return bMenuShown;
    }
    QString CollectionRoot() const { return GetVirtualCameraRoot(); }
    QByteArray ConfigBytes() const { return ReadAll(VirtualStore::configFilePath()); }
    // End-to-end smoke; the store functions underneath have their own tests.
};

void VirtualCameraWindowTest::SetUp()
{
    ASSERT_TRUE(QDir(VirtualStore::storePath()).removeRecursively());
    ASSERT_TRUE(QDir(CollectionRoot()).removeRecursively());
}

void VirtualCameraWindowTest::TearDown()
{
    m_pWindow.reset();
}

TEST_F(VirtualCameraWindowTest, add_thenDelete_createsAndRemovesFolderGroupAndEntry)
{
    MakeCollectionFolder(CollectionRoot() + "/QVX-ID5120M", "QVX-ID5120M");
    OpenWindow();
    // Without a current entry the context menu does not come up.
    List()->setCurrentItem(nullptr);
    ASSERT_TRUE(!DeleteThroughContextMenu());
    Selector()->setCurrentText("QVX-ID5120M");
    AddButton()->click();

    ASSERT_EQ(List()->count(), 1);
    const QString strText = List()->item(0)->text();
    const QRegularExpressionMatch match = QRegularExpression("^QVX-ID5120M\\((Vir\\d{8})\\)$").match(strText);
    ASSERT_TRUE(match.hasMatch()) << qPrintable(strText);
    const QString strGroup = match.captured(1);
    ASSERT_EQ(List()->item(0)->data(kGroupRole).toString(), strGroup);
    const QString strFolder = VirtualStore::cameraFolder(strGroup);
    ASSERT_EQ(ReadAll(strFolder + "/Jpg/2.jpg"), ReadAll(CollectionRoot() + "/QVX-ID5120M/Jpg/2.jpg"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(ConfigBytes().contains(("chSerialNumber=" + strGroup).toUtf8())); }));

    List()->setCurrentRow(0);
    ASSERT_TRUE(DeleteThroughContextMenu());
    ASSERT_EQ(List()->count(), 0);
    ASSERT_TRUE(!QFileInfo::exists(strFolder));
    ASSERT_TRUE(QTest::qWaitFor([&] { return bool(!ConfigBytes().contains(strGroup.toUtf8())); }));
    ASSERT_TRUE(ConfigBytes().contains("[Global]"));
}

TEST_F(VirtualCameraWindowTest, delete_whileAServerHoldsTheCamera_isRefusedWithAWarning)
{
    MakeCollectionFolder(CollectionRoot() + "/QVX-ID2040M", "QVX-ID2040M");
    OpenWindow();
    Selector()->setCurrentText("QVX-ID2040M");
    AddButton()->click();
    ASSERT_EQ(List()->count(), 1);
    const QString strGroup = List()->item(0)->data(kGroupRole).toString();

    quorvex::store::CameraHold hold;
    std::string error;
    ASSERT_TRUE(hold.acquire(VirtualStore::registerFilePath(strGroup, "QVX-ID2040M").toStdString(), error)) << error.c_str();
    List()->setCurrentRow(0);
    QString strWarning;
    ConfirmNextMessageBox(&strWarning);
    ASSERT_TRUE(DeleteThroughContextMenu());
    ASSERT_EQ(strWarning, QString("The camera is connected, please disconnect and try again!"));
    ASSERT_EQ(List()->count(), 1);
    ASSERT_TRUE(QFileInfo::exists(VirtualStore::cameraFolder(strGroup) + "/QVX-ID2040M.xml"));

    hold.release();
    ASSERT_TRUE(DeleteThroughContextMenu());
    ASSERT_EQ(List()->count(), 0);
    ASSERT_TRUE(!QFileInfo::exists(VirtualStore::cameraFolder(strGroup)));
}


#include "clicklabel.h"

#include "support/testmain.h"

#include <QMouseEvent>
#include <QSignalSpy>
#include <QWindow>

Q_DECLARE_METATYPE(Qt::MouseButton)

namespace {

/// Counts the mouse releases that reach it.
class ReleaseCounter : public QWidget
{
public:
    int releases = 0;

protected:
    void mouseReleaseEvent(QMouseEvent* /*event*/) override { ++releases; }
};

void sendRelease(QWidget& receiver, Qt::MouseButton button, const QPoint& position = QPoint(1, 1))
{
    QMouseEvent release(QEvent::MouseButtonRelease, position, button, Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(&receiver, &release);
}

} // namespace

class TestClickLabel : public QObject
{
    Q_OBJECT

private slots:
    void isALabelWithTextParentAndPointingHand();
    void isNamedAfterItsText_data();
    void isNamedAfterItsText();
    void offersOneSignalAndNoSlot();
    void everyButtonsReleaseEmitsOnce_data();
    void everyButtonsReleaseEmitsOnce();
    void theEventIsNotExamined();
    void theReleaseGoesNoFurther();
    void aPressAloneEmitsNothing();
    void pressedOutsideAndReleasedOverItEmitsNothing();
    void pressedOnItAndReleasedElsewhereEmits();
    void mayBeDeletedByWhoHearsTheClick();
};

void TestClickLabel::isALabelWithTextParentAndPointingHand()
{
    QWidget parent;
    const auto* const label = new ClickLabel(QStringLiteral("Led"), &parent);
    QCOMPARE(label->text(), QStringLiteral("Led"));
    QCOMPARE(label->parentWidget(), &parent);
    QCOMPARE(label->windowFlags(), QLabel(&parent).windowFlags());
    QCOMPARE(label->cursor().shape(), Qt::PointingHandCursor);
}

void TestClickLabel::isNamedAfterItsText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("name");
    QTest::newRow("a lamp") << "Led"
                            << "Led Label";
    QTest::newRow("no text") << ""
                             << " Label";
    QTest::newRow("blanks stay") << " a b "
                                 << " a b  Label";
}

void TestClickLabel::isNamedAfterItsText()
{
    QFETCH(QString, text);
    const ClickLabel label(text, nullptr);
    QTEST(label.objectName(), "name");
}

void TestClickLabel::offersOneSignalAndNoSlot()
{
    const QMetaObject& meta = ClickLabel::staticMetaObject;
    QCOMPARE(meta.className(), "ClickLabel");
    QCOMPARE(meta.superClass(), &QLabel::staticMetaObject);
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    const QMetaMethod signal = meta.method(meta.methodOffset());
    QCOMPARE(signal.methodType(), QMetaMethod::Signal);
    QCOMPARE(signal.methodSignature(), QByteArray("signal_open()"));
}

void TestClickLabel::everyButtonsReleaseEmitsOnce_data()
{
    QTest::addColumn<Qt::MouseButton>("button");
    QTest::newRow("left") << Qt::LeftButton;
    QTest::newRow("right") << Qt::RightButton;
    QTest::newRow("middle") << Qt::MiddleButton;
    QTest::newRow("back") << Qt::BackButton;
}

void TestClickLabel::everyButtonsReleaseEmitsOnce()
{
    QFETCH(Qt::MouseButton, button);
    ClickLabel label(QStringLiteral("Led"), nullptr);
    const QSignalSpy clicks(&label, SIGNAL(signal_open()));
    QTest::mouseClick(&label, button);
    QCOMPARE(clicks.count(), 1);
}

void TestClickLabel::theEventIsNotExamined()
{
    ClickLabel label(QStringLiteral("Led"), nullptr);
    const QSignalSpy clicks(&label, SIGNAL(signal_open()));
    sendRelease(label, Qt::NoButton);
    sendRelease(label, Qt::LeftButton, QPoint(-500, 9000));
    QCOMPARE(clicks.count(), 2);
}

void TestClickLabel::theReleaseGoesNoFurther()
{
    ReleaseCounter parent;
    ClickLabel label(QStringLiteral("Led"), &parent);
    QLabel plain(QStringLiteral("Led"), &parent);
    sendRelease(plain, Qt::LeftButton);
    QCOMPARE(parent.releases, 1); // a plain label passes it on
    sendRelease(label, Qt::LeftButton);
    QCOMPARE(parent.releases, 1);
}

void TestClickLabel::aPressAloneEmitsNothing()
{
    ClickLabel label(QStringLiteral("Led"), nullptr);
    const QSignalSpy clicks(&label, SIGNAL(signal_open()));
    QTest::mousePress(&label, Qt::LeftButton);
    QCOMPARE(clicks.count(), 0);
    QTest::mouseRelease(&label, Qt::LeftButton);
    QCOMPARE(clicks.count(), 1);
}

void TestClickLabel::pressedOutsideAndReleasedOverItEmitsNothing()
{
    QWidget window;
    window.resize(200, 100);
    ClickLabel label(QStringLiteral("Led"), &window);
    label.setGeometry(100, 0, 100, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QSignalSpy clicks(&label, SIGNAL(signal_open()));
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(50, 50));
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(150, 50));
    QCOMPARE(clicks.count(), 0);
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(150, 50));
    QCOMPARE(clicks.count(), 1);
}

void TestClickLabel::pressedOnItAndReleasedElsewhereEmits()
{
    QWidget window;
    window.resize(200, 100);
    ClickLabel label(QStringLiteral("Led"), &window);
    label.setGeometry(100, 0, 100, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QSignalSpy clicks(&label, SIGNAL(signal_open()));
    QTest::mousePress(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(150, 50));
    QTest::mouseRelease(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(50, 50));
    QCOMPARE(clicks.count(), 1);
}

void TestClickLabel::mayBeDeletedByWhoHearsTheClick()
{
    QWidget window;
    window.resize(100, 100);
    QPointer<ClickLabel> label = new ClickLabel(QStringLiteral("Led"), &window);
    label->setGeometry(0, 0, 100, 100);
    connect(label, &ClickLabel::signal_open, &window, [&label] { delete label; });
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, QPoint(50, 50));
    QVERIFY(label.isNull());
}

DFL_TEST_MAIN(TestClickLabel)
#include "tst_clicklabel.moc"

#include "reportpictures.h"

#include <QLabel>
#include <QMessageBox>
#include <QPixmap>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace VelmarGui {

void ReportPictures::limit(QMessageBox& box)
{
    auto* const label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    if (label == nullptr)
        return;
    label->setOpenExternalLinks(false);
    label->setText(QStringLiteral("<b></b>")); // makes the document, which stays for the texts to come
    if (auto* const document = label->findChild<QTextDocument*>())
        document->setParent(new ReportPictures(label));
    else
        label->setTextFormat(Qt::PlainText); // rather unreadable than read from anywhere
}

void ReportPictures::shorten(QMessageBox& box)
{
    constexpr int mostCharacters = 200;
    auto* const label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    auto* const document = label != nullptr ? label->findChild<QTextDocument*>() : nullptr;
    if (document == nullptr || label->text().size() <= mostCharacters)
        return;
    label->setSelection(0, 0); // a label hands its text to the document only when something is asked of it
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        if (block.length() <= mostCharacters)
            continue;
        QTextCursor rest(block);
        rest.movePosition(QTextCursor::NextCharacter, QTextCursor::MoveAnchor, mostCharacters);
        rest.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        rest.insertText(QString(QChar(0x2026)));
    }
}

QVariant ReportPictures::loadResource(int type, const QUrl& name) const
{
    if (type != QTextDocument::ImageResource)
        return QByteArray("");
    const bool isOwn = name.scheme() == QLatin1String("qrc") && name.path().startsWith(QLatin1String("/icons/"));
    QPixmap picture(isOwn ? QLatin1Char(':') + name.path() : QString());
    if (picture.isNull()) {
        picture = QPixmap(1, 1);
        picture.fill(Qt::transparent);
    }
    return picture;
}

} // namespace VelmarGui

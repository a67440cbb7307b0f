#pragma once

#include <QObject>
#include <QUrl>
#include <QVariant>

class QMessageBox;

namespace VelmarGui {

/// What the status report may show beside its text: the component's own pictures, whatever the names of stations in it
/// ask for. A driver must not be able to have files read, or pages opened, on the operator's machine.
///
/// Is asked by the text document whose parent it is.
class ReportPictures : public QObject
{
    Q_OBJECT
public:
    /// To be called before @p box gets its text; ends with the box.
    static void limit(QMessageBox& box);
    /// To be called when @p box has its text, which stays; its view shows the beginning of every name that is longer
    /// than any name is. Laying out one of a megabyte would keep the operator waiting for the better part of a minute.
    static void shorten(QMessageBox& box);

    /// @p type is a QTextDocument::ResourceType. An empty picture or text for all that is not the component's own;
    /// never null, which would send the document to the files.
    Q_INVOKABLE QVariant loadResource(int type, const QUrl& name) const;

private:
    using QObject::QObject;
};

} // namespace VelmarGui

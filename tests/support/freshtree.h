#pragma once

#include "valueframework/tree.h"

namespace testsupport {

/// An empty value tree for the life of this object, and an empty one after it.
class FreshTree
{
public:
    FreshTree() { values::Tree::Instance()->Clear(); }
    ~FreshTree() { values::Tree::Instance()->Clear(); }
    FreshTree(const FreshTree&) = delete;
    FreshTree& operator=(const FreshTree&) = delete;

    /// Creates a value of kind T at @p path (folders are made) and returns it.
    template <typename T>
    T* add(const QString& path) const
    {
        auto* value = new T;
        const int nameStart = path.lastIndexOf(QLatin1Char('/')) + 1;
        value->SetName(path.mid(nameStart), nullptr);
        if (!values::Tree::Instance()->InsertValue(path.left(nameStart), value))
            qFatal("The path %s is taken", qPrintable(path));
        return value;
    }
};

} // namespace testsupport

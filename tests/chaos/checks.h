#pragma once

#include "world.h"

#include <QStringList>

#include <memory>

namespace chaos {

class Operations;

/// What must hold whatever has happened. Each check gives a sentence for everything that does not.
class Checks
{
public:
    Checks(World& world, Operations& operations);
    ~Checks();

    /// Looks only; may be called between any two operations.
    [[nodiscard]] QStringList look() const;
    /// Announces values anew and compares what is shown with what they say. Meddlers keep still meanwhile.
    [[nodiscard]] QStringList probe();
    /// Of a world that has just been made complete: everything works.
    [[nodiscard]] QStringList tryOut();
    /// Of a world that has ended and whose objects are deleted: nothing is left of it, and nobody observes a value.
    [[nodiscard]] QStringList lookForLeftovers() const;

    /// Collects what is told by traces, Qt's messages and exceptions that reach the application object.
    [[nodiscard]] static QStringList takeComplaints();
    static void complain(const QString& sentence);

private:
    World& m_world;
    Operations& m_operations;
    int m_widgetsAtFirst = 0;
};

} // namespace chaos

#pragma once

#include "frequencyranges.h"

#include <QString>

#include <map>

namespace VelmarGui {

/// What is known of one DF station.
struct LocateStationStatus
{
    int id = 0;           ///< DF identifier, also the key in the map
    QString name;         ///< empty until the driver has told it
    int status = 0;       ///< bits, see below; other bits mean nothing here
    double rangeLow = 0;  ///< lower end of the frequency range in Hz, 0 when unknown
    double rangeHigh = 0; ///< upper end in Hz, 0 when unknown

    static constexpr int Available = 1;
    static constexpr int ScanCapable = 16;
    static constexpr int WidebandCapable = 32;

    /// True when @p frequency (Hz) lies in the range, both ends included.
    [[nodiscard]] bool Covers(double frequency) const { return rangeLow <= frequency && frequency <= rangeHigh; }
};

/// What is known of one locate service and its stations.
struct LocateServiceStatus
{
    std::map<int, LocateStationStatus> stations; ///< by DF identifier
    bool anyAvailable = false;                   ///< the last text held a station that is available
    bool connected = false;                      ///< the last text was not empty
    QString heldText;                            ///< a text that would change nothing; empty when none is known
};

/// Brings @p service up to date with a status text of the driver.
///
/// The text is a list of tokens separated by "#". "DFID<number>" names the station that the tokens after it are about:
/// "N_<name>", "ST<status word>", "FB<Hz>" and "FE<Hz>" (range); all others mean nothing here. A number that cannot be
/// read is 0. An empty text forgets all stations; any other adds to what is known: a station that it leaves out stays,
/// with its last fields, and so does a field that it leaves out.
///
/// False when the text had nothing new and was not even read: most evaluations come from the frequency, and the text is
/// that of before.
bool applyStatusText(LocateServiceStatus& service, const QString& text);

/// The ranges of all stations of @p service, available or not.
[[nodiscard]] FrequencyRanges rangesOf(const LocateServiceStatus& service);

/// The report on both services as HTML, in the language of the user. @p frequency (Hz) decides which ranges are shown
/// as out of range.
[[nodiscard]] QString buildReport(const LocateServiceStatus& df, const LocateServiceStatus& hri, double frequency);

} // namespace VelmarGui

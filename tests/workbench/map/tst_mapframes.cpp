// How much is computed for a frame of the map: counted where the map asks for geodesics and places on its plane.

#include "drivers/geodesy.h"
#include "map/mapcanvas.h"
#include "map/mapitems.h"
#include "map/mapscene.h"
#include "map/mapview.h"

#include "mapbench.h"
#include "support/testmain.h"

#include <GeographicLib/AzimuthalEquidistant.hpp>
#include <GeographicLib/Geodesic.hpp>
#include <GeographicLib/GeodesicLine.hpp>

using namespace workbench;
using GeographicLib::AzimuthalEquidistant;
using GeographicLib::Geodesic;
using GeographicLib::GeodesicLine;

namespace {

struct Counts
{
    int geodesics = 0; ///< points of lines of bearing and ellipses
    int places = 0;    ///< from the Earth to the plane or back
};

Counts counts;

} // namespace

// The linker takes these in place of the library's functions, which go on under the names with "real".
extern "C" {
double __real__ZNK13GeographicLib12GeodesicLine11GenPositionEbdjRdS1_S1_S1_S1_S1_S1_S1_(const GeodesicLine*, bool,
                                                                                        double, unsigned, double&,
                                                                                        double&, double&, double&,
                                                                                        double&, double&, double&,
                                                                                        double&);
double __wrap__ZNK13GeographicLib12GeodesicLine11GenPositionEbdjRdS1_S1_S1_S1_S1_S1_S1_(
    const GeodesicLine* line, bool arcMode, double length, unsigned mask, double& a, double& b, double& c, double& d,
    double& e, double& f, double& g, double& h)
{
    ++counts.geodesics;
    return __real__ZNK13GeographicLib12GeodesicLine11GenPositionEbdjRdS1_S1_S1_S1_S1_S1_S1_(line, arcMode, length, mask,
                                                                                            a, b, c, d, e, f, g, h);
}

double __real__ZNK13GeographicLib8Geodesic9GenDirectEdddbdjRdS1_S1_S1_S1_S1_S1_S1_(const Geodesic*, double, double,
                                                                                   double, bool, double, unsigned,
                                                                                   double&, double&, double&, double&,
                                                                                   double&, double&, double&, double&);
double __wrap__ZNK13GeographicLib8Geodesic9GenDirectEdddbdjRdS1_S1_S1_S1_S1_S1_S1_(
    const Geodesic* earth, double latitude, double longitude, double azimuth, bool arcMode, double length,
    unsigned mask, double& a, double& b, double& c, double& d, double& e, double& f, double& g, double& h)
{
    ++counts.geodesics;
    return __real__ZNK13GeographicLib8Geodesic9GenDirectEdddbdjRdS1_S1_S1_S1_S1_S1_S1_(
        earth, latitude, longitude, azimuth, arcMode, length, mask, a, b, c, d, e, f, g, h);
}

void __real__ZNK13GeographicLib20AzimuthalEquidistant7ForwardEddddRdS1_S1_S1_(const AzimuthalEquidistant*, double,
                                                                              double, double, double, double&, double&,
                                                                              double&, double&);
void __wrap__ZNK13GeographicLib20AzimuthalEquidistant7ForwardEddddRdS1_S1_S1_(const AzimuthalEquidistant* plane,
                                                                              double a, double b, double c, double d,
                                                                              double& e, double& f, double& g,
                                                                              double& h)
{
    ++counts.places;
    __real__ZNK13GeographicLib20AzimuthalEquidistant7ForwardEddddRdS1_S1_S1_(plane, a, b, c, d, e, f, g, h);
}

void __real__ZNK13GeographicLib20AzimuthalEquidistant7ReverseEddddRdS1_S1_S1_(const AzimuthalEquidistant*, double,
                                                                              double, double, double, double&, double&,
                                                                              double&, double&);
void __wrap__ZNK13GeographicLib20AzimuthalEquidistant7ReverseEddddRdS1_S1_S1_(const AzimuthalEquidistant* plane,
                                                                              double a, double b, double c, double d,
                                                                              double& e, double& f, double& g,
                                                                              double& h)
{
    ++counts.places;
    __real__ZNK13GeographicLib20AzimuthalEquidistant7ReverseEddddRdS1_S1_S1_(plane, a, b, c, d, e, f, g, h);
}
}

class TestMapFrames : public QObject
{
    Q_OBJECT
private slots:
    void init()
    {
        m_view = std::make_unique<MapView>([this] { return m_now; }, nullptr);
        m_view->resize(800, 500);
        m_view->show();
        counts = {};
        addResult({45.3, 6.1});
        paint();
    }

    void cleanup() { m_view.reset(); }

    void aResultComputesItsLinesOnce()
    {
        QVERIFY(m_view->model()->fix() != nullptr);
        // Each line has two points at least and here few more, the ellipse 72; the fix moves a few times.
        QVERIFY2(counts.geodesics >= 2 * stations + 72 && counts.geodesics <= 5 * stations + 72 + movesOfAFix,
                 qPrintable(QString::number(counts.geodesics)));
        QVERIFY(counts.places > counts.geodesics);
    }

    void theNextResultComputesItsOwnLinesOnly()
    {
        counts = {};
        addResult({45.301, 6.1});
        paint();
        // Two points for each line, which are short here.
        QVERIFY2(counts.geodesics >= 2 * stations + 72 && counts.geodesics <= 2 * stations + 72 + movesOfAFix,
                 qPrintable(QString::number(counts.geodesics)));
    }

    void aFrameComputesNothing()
    {
        counts = {};
        paint();
        QCOMPARE(counts.geodesics, 0);
        QCOMPARE(counts.places, 0);
    }

    void panningComputesNothing()
    {
        counts = {};
        QTest::keyClick(canvas(), Qt::Key_Left); // an eighth of the width
        paint();
        QTest::keyClick(canvas(), Qt::Key_Down);
        paint();
        QCOMPARE(counts.geodesics, 0);
        QCOMPARE(counts.places, 0);
    }

    void panningFarComputesTheGraticuleOnly()
    {
        counts = {};
        for (int i = 0; i < 8; ++i) {
            QTest::keyClick(canvas(), Qt::Key_Left);
            paint();
        }
        QCOMPARE(counts.geodesics, 0);
        QVERIFY2(counts.places > 0 && counts.places < 4 * 1000, qPrintable(QString::number(counts.places)));
    }

    void zoomingComputesTheGraticuleOnly()
    {
        counts = {};
        QTest::keyClick(canvas(), Qt::Key_Plus);
        paint();
        QCOMPARE(counts.geodesics, 0);
        QVERIFY2(counts.places > 0 && counts.places < 1000, qPrintable(QString::number(counts.places)));
    }

    void markingAndAgingComputeNothing()
    {
        counts = {};
        m_view->pick(137);
        m_now = MapModel::lifetime / 2;
        m_view->scene()->refreshAges();
        paint();
        QCOMPARE(counts.geodesics, 0);
        QCOMPARE(counts.places, 0);
    }

    void anExclusionComputesTheEllipseOnly()
    {
        counts = {};
        m_view->toggle(137);
        paint();
        QVERIFY2(counts.geodesics >= 72 && counts.geodesics <= 72 + movesOfAFix,
                 qPrintable(QString::number(counts.geodesics)));
    }

    void theGraticuleOfAnotherPlaneIsAnother()
    {
        m_view->model()->setStations({});
        paint();
        counts = {};
        m_view->model()->addResult(mapbench::result(mapbench::acrossTheDateLine()));
        const int before = counts.places;
        paint();
        QVERIFY(counts.places > before);
    }

private:
    static constexpr int stations = 200;
    static constexpr int movesOfAFix = 20; // until it is where it fits best

    [[nodiscard]] MapCanvas* canvas() const { return m_view->canvas(); }
    void addResult(const GeoPosition& emitter)
    {
        std::vector<mapbench::Shot> shots;
        for (int i = 0; i < stations; ++i) {
            const GeoPosition place{45.0 + 0.01 * (i % 20), 6.0 + 0.02 * (i / 20)};
            shots.push_back({i + 1, place.latitude, place.longitude, geodesy::line(place, emitter).azimuth, 90.0});
        }
        m_view->model()->addResult(mapbench::result(shots));
    }

    void paint() const { QVERIFY(!canvas()->viewport()->grab().isNull()); }

    qint64 m_now = 0;
    std::unique_ptr<MapView> m_view;
};

DFL_TEST_MAIN(TestMapFrames)
#include "tst_mapframes.moc"

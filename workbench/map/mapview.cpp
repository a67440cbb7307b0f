#include "map/mapview.h"

#include "filework/filework.h"
#include "filework/savefile.h"
#include "map/mapbackground.h"
#include "map/mapcanvas.h"
#include "map/mapexport.h"
#include "map/mapformats.h"
#include "map/mapscene.h"

#include "ztbase/brix/texts.h"

#include <QBuffer>
#include <QClipboard>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QProgressBar>
#include <QPushButton>
#include <QSplitter>
#include <QSvgGenerator>
#include <QTableView>
#include <QVBoxLayout>

namespace workbench {

namespace {

/// The table of the stations. The space bar checks and unchecks the current row; a view by itself does so only for a
/// cell that has a check box.
class StationTable final : public QTableView
{
public:
    using QTableView::QTableView;

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        const QModelIndex box = currentIndex().siblingAtColumn(MapModel::StationColumn);
        if (event->key() != Qt::Key_Space || event->modifiers() != Qt::NoModifier || !box.isValid()) {
            QTableView::keyPressEvent(event);
            return;
        }
        const bool isChecked = box.data(Qt::CheckStateRole) == QVariant(Qt::Checked);
        model()->setData(box, isChecked ? Qt::Unchecked : Qt::Checked, Qt::CheckStateRole);
    }
};

} // namespace

MapView::MapView(QWidget* parent)
    : MapView(MapModel::Clock(), parent)
{
}

MapView::MapView(MapModel::Clock clock, QWidget* parent)
    : QWidget(parent)
    , m_model(clock ? new MapModel(std::move(clock), this) : new MapModel(this))
    , m_scene(new MapScene(*m_model, this))
    , m_canvas(new MapCanvas(*m_scene))
    , m_background(new MapBackground(*m_scene, this))
    , m_files(new FileWork(this))
    , m_table(new StationTable)
    , m_fixText(new QLabel)
    , m_pointedAt(new QLabel)
{
    setObjectName(QStringLiteral("MapView"));
    buildTable();
    m_fixText->setObjectName(QStringLiteral("FixText"));
    m_fixText->setTextFormat(Qt::PlainText);
    m_fixText->setWordWrap(true);
    m_fixText->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_fixText->setMinimumHeight(4 * fontMetrics().lineSpacing());
    m_fixText->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    m_pointedAt->setObjectName(QStringLiteral("PointedAt"));

    auto* const side = new QWidget;
    auto* const sideLayout = new QVBoxLayout(side);
    sideLayout->setContentsMargins(0, 0, 0, 0);
    sideLayout->addWidget(m_fixText);
    sideLayout->addWidget(m_table);
    auto* const splitter = new QSplitter;
    splitter->addWidget(m_canvas);
    splitter->addWidget(side);
    splitter->setStretchFactor(0, 1);
    splitter->setCollapsible(0, false);
    const int letter = fontMetrics().averageCharWidth();
    splitter->setSizes({100 * letter, 56 * letter});

    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(controls());
    layout->addWidget(splitter, 1);
    auto* const foot = new QHBoxLayout;
    foot->addWidget(m_pointedAt, 1);
    foot->addWidget(readingBar(), 1);
    layout->addLayout(foot);
    connectParts();
    showFix();
    showPointedAt(std::nullopt);
}

void MapView::buildTable()
{
    m_table->setObjectName(QStringLiteral("MapStations"));
    m_table->setModel(m_model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setWordWrap(false);
    m_table->setTabKeyNavigation(false);
    m_table->setAlternatingRowColors(true);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() * 3 / 2);
    m_table->horizontalHeader()->setHighlightSections(false);
    m_table->horizontalHeader()->setSectionResizeMode(MapModel::UseColumn, QHeaderView::Stretch);
    const int letter = m_table->fontMetrics().averageCharWidth();
    m_table->setColumnWidth(MapModel::StationColumn, 18 * letter);
    for (const int column : {MapModel::BearingColumn, MapModel::QualityColumn, MapModel::ResidualColumn})
        m_table->setColumnWidth(column, 8 * letter);
}

QWidget* MapView::controls()
{
    auto* const bar = new QWidget;
    auto* const layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    const auto addButton = [&](const char* name, const QString& text, const QString& toolTip, auto&& action) {
        auto* const button = new QPushButton(text);
        button->setObjectName(QLatin1String(name));
        button->setToolTip(toolTip);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, action);
        layout->addWidget(button);
        return button;
    };
    addButton("MapFit", tr("Fit"), tr("Show all stations and the fix (F)"), [this] { m_canvas->fit(); });
    addButton("MapZoomIn", tr("Zoom in"), tr("Show less, larger (+)"), [this] { m_canvas->zoomIn(); });
    addButton("MapZoomOut", tr("Zoom out"), tr("Show more, smaller (-)"), [this] { m_canvas->zoomOut(); });

    auto* const sigma = new QDoubleSpinBox;
    sigma->setObjectName(QStringLiteral("MapSigma"));
    sigma->setRange(0.1, 45.0);
    sigma->setDecimals(1);
    sigma->setSingleStep(0.5);
    sigma->setSuffix(QStringLiteral("°"));
    sigma->setToolTip(tr("Standard deviation of bearings of which no station states it"));
    sigma->setValue(m_model->assumedSigma());
    connect(sigma, QOverload<double>::of(&QDoubleSpinBox::valueChanged), m_model, &MapModel::setAssumedSigma);
    auto* const sigmaLabel = new QLabel(tr("Assumed bearing error"));
    sigmaLabel->setBuddy(sigma);

    auto* const probability = new QComboBox;
    probability->setObjectName(QStringLiteral("MapProbability"));
    probability->setToolTip(tr("How probable it is that the ellipse holds the emitter"));
    for (const double share : {0.5, 0.9, MapModel::defaultProbability, 0.99})
        probability->addItem(percentText(share), share);
    probability->setCurrentIndex(probability->findData(m_model->probability()));
    connect(probability, QOverload<int>::of(&QComboBox::currentIndexChanged), m_model,
            [this, probability](int index) { m_model->setProbability(probability->itemData(index).toDouble()); });
    auto* const probabilityLabel = new QLabel(tr("Ellipse"));
    probabilityLabel->setBuddy(probability);

    layout->addStretch(1);
    for (QWidget* const widget : {static_cast<QWidget*>(sigmaLabel), static_cast<QWidget*>(sigma),
                                  static_cast<QWidget*>(probabilityLabel), static_cast<QWidget*>(probability)})
        layout->addWidget(widget);
    layout->addStretch(1);
    m_copyFix = addButton("MapCopyFix", tr("Copy fix"), tr("Copy the coordinates of the fix"), &MapView::copyFix);
    addButton("MapExport", tr("Export …"), tr("Save the picture, the results or the positions"), &MapView::exportAs);
    return bar;
}

/// Stands below the map while a background is read, and has its place always: the map shall not jump.
QWidget* MapView::readingBar()
{
    auto* const bar = new QWidget;
    bar->setObjectName(QStringLiteral("MapReading"));
    auto* const share = new QProgressBar;
    share->setRange(0, 100);
    auto* const label = new QLabel(tr("Reading the background"));
    label->setBuddy(share);
    auto* const cancel = new QPushButton(tr("Cancel"));
    cancel->setObjectName(QStringLiteral("MapReadingCancel"));
    cancel->setToolTip(tr("Give up the file; the present background stays"));
    cancel->setAutoDefault(false);
    auto* const layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label);
    layout->addWidget(share, 1);
    layout->addWidget(cancel);
    QSizePolicy policy = bar->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    bar->setSizePolicy(policy);
    bar->hide();
    connect(cancel, &QPushButton::clicked, m_background, &MapBackground::cancel);
    connect(m_background, &MapBackground::progressed, share, &QProgressBar::setValue);
    connect(m_background, &MapBackground::readingChanged, this, [bar, share](bool isReading) {
        share->setValue(0);
        bar->setVisible(isReading);
    });
    return bar;
}

void MapView::connectParts()
{
    connect(m_background, &MapBackground::finished, this,
            [this](bool /*isShown*/, const QString& text) { emit message(text); });
    connect(m_canvas, &MapCanvas::picked, this, &MapView::pick);
    connect(m_canvas, &MapCanvas::toggleRequested, this, &MapView::toggle);
    connect(m_canvas, &MapCanvas::pointedAt, this, &MapView::showPointedAt);
    m_canvas->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(m_canvas, &QWidget::customContextMenuRequested, this, &MapView::popUpMenu);
    connect(m_table->selectionModel(), &QItemSelectionModel::selectionChanged, this, &MapView::markSelected);
    // A reset ends the selection without a word.
    connect(m_model, &QAbstractItemModel::modelReset, this, &MapView::markSelected);
    connect(m_model, &MapModel::bearingsChanged, this, &MapView::showFix);
    connect(m_model, &MapModel::useChanged, this, &MapView::showFix);
}

void MapView::showFix()
{
    m_fixText->setText(m_model->fixText());
    m_copyFix->setEnabled(m_model->fix() != nullptr);
}

void MapView::markSelected()
{
    const QModelIndexList rows = m_table->selectionModel()->selectedRows();
    m_scene->setMarked(rows.isEmpty()
                           ? std::nullopt
                           : std::optional(m_model->stations()[static_cast<std::size_t>(rows.first().row())].id));
}

void MapView::pick(std::optional<int> stationId)
{
    const auto row = stationId ? m_model->rowOf(*stationId) : std::nullopt;
    if (row)
        m_table->setCurrentIndex(m_model->index(*row, MapModel::StationColumn));
    else
        m_table->clearSelection();
}

void MapView::toggle(int stationId)
{
    if (const MapStation* const station = m_model->station(stationId))
        m_model->setExcluded(stationId, !station->excluded);
}

void MapView::copyFix()
{
    if (const Fix* const fix = m_model->fix())
        copyCoordinates(fix->position);
}

void MapView::copyCoordinates(const GeoPosition& position)
{
    const QString text = coordinatesText(position);
    QGuiApplication::clipboard()->setText(text);
    emit message(tr("Copied: %1").arg(text));
}

void MapView::showPointedAt(const std::optional<GeoPosition>& position)
{
    m_pointedAt->setText(position ? positionText(*position) : tr("Point at the map for a position."));
}

void MapView::popUpMenu(const QPoint& place)
{
    auto* const menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("MapMenu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (const auto station = m_canvas->stationAt(place)) {
        pick(station);
        const MapStation& picked = *m_model->station(*station);
        // Concatenated: a name may hold what looks like a place marker.
        const QString name = Brix::MenuText(stationText(picked.name));
        QAction* const toggleAction =
            menu->addAction((picked.excluded ? tr("&Include bearing of ") : tr("&Exclude bearing of ")) + name);
        connect(toggleAction, &QAction::triggered, this, [this, id = picked.id] { toggle(id); });
        menu->addSeparator();
    }
    if (const auto position = m_canvas->positionAt(place)) {
        QAction* const copy = menu->addAction(tr("&Copy coordinates of this place"));
        connect(copy, &QAction::triggered, this, [this, here = *position] { copyCoordinates(here); });
    }
    menu->addAction(tr("&Fit"), m_canvas, &MapCanvas::fit);
    menu->popup(m_canvas->viewport()->mapToGlobal(place));
}

void MapView::exportTo(const QString& file)
{
    const auto content = contentOf(QFileInfo(file).suffix().toLower());
    if (!content) {
        emit message(tr("%1: the name of the file has to end in .png, .svg, .csv, .geojson or .kml.").arg(file));
        return;
    }
    m_files->run([file, content] { return saveFile(file, content()); },
                 [this, file](const std::optional<QString>& failure) {
                     emit message(failure ? *failure : tr("%1: the file is saved.").arg(file));
                 });
}

std::function<QByteArray()> MapView::contentOf(const QString& suffix) const
{
    if (suffix == QLatin1String("png")) {
        return [picture = m_canvas->viewport()->grab().toImage()] {
            QByteArray bytes;
            QBuffer buffer(&bytes);
            picture.save(&buffer, "PNG");
            return bytes;
        };
    }
    if (suffix == QLatin1String("svg"))
        return [bytes = svgPicture()] { return bytes; };
    if (suffix == QLatin1String("csv"))
        return [map = m_model->snapshot()] { return mapexport::csvText(map); };
    if (suffix == QLatin1String("geojson"))
        return [map = m_model->snapshot(), length = m_scene->lineLength()] { return mapexport::geoJson(map, length); };
    if (suffix == QLatin1String("kml"))
        return [map = m_model->snapshot(), length = m_scene->lineLength()] { return mapexport::kml(map, length); };
    return nullptr;
}

QByteArray MapView::svgPicture() const
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    const QRect area = m_canvas->viewport()->rect();
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setSize(area.size());
    generator.setViewBox(area);
    generator.setTitle(tr("DF map"));
    generator.setDescription(m_model->fixText());
    QPainter painter(&generator);
    m_canvas->render(&painter, area, area);
    painter.end();
    return bytes;
}

// Dialogs are opened, not executed: a dialog that waits in a function would outlive a window that is closed meanwhile.

void MapView::chooseBackground()
{
    auto* const dialog = new QFileDialog(this, tr("Map background"));
    dialog->setObjectName(QStringLiteral("MapBackgroundDialog"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilters({tr("GeoJSON (*.geojson *.json)"), tr("All files (*)")});
    connect(dialog, &QFileDialog::fileSelected, m_background, &MapBackground::open);
    dialog->open();
}

void MapView::exportAs()
{
    const QStringList filters{tr("PNG picture (*.png)"), tr("SVG picture (*.svg)"), tr("Results (*.csv)"),
                              tr("GeoJSON (*.geojson)"), tr("KML (*.kml)")};
    const QStringList suffixes{QStringLiteral("png"), QStringLiteral("svg"), QStringLiteral("csv"),
                               QStringLiteral("geojson"), QStringLiteral("kml")};
    auto* const dialog = new QFileDialog(this, tr("Export the map"));
    dialog->setObjectName(QStringLiteral("MapExportDialog"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setNameFilters(filters);
    dialog->setDefaultSuffix(suffixes.first());
    dialog->selectFile(QStringLiteral("map"));
    connect(dialog, &QFileDialog::filterSelected, dialog, [dialog, filters, suffixes](const QString& filter) {
        dialog->setDefaultSuffix(suffixes.value(filters.indexOf(filter)));
    });
    connect(dialog, &QFileDialog::fileSelected, this, &MapView::exportTo);
    dialog->open();
}

} // namespace workbench

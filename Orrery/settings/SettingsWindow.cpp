#include "Orrery/settings/SettingsWindow.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QCoreApplication>
#include <QFile>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QPushButton>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QSlider>
#include <QSpinBox>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

#include "Orrery/appearance/IconStore.h"

namespace orrery::app {

namespace {

QString cornerName(Corner corner) {
  switch (corner) {
    case Corner::none:
      return SettingsWindow::tr("None");
    case Corner::topLeft:
      return SettingsWindow::tr("Top left");
    case Corner::topRight:
      return SettingsWindow::tr("Top right");
    case Corner::bottomLeft:
      return SettingsWindow::tr("Bottom left");
    case Corner::bottomRight:
      return SettingsWindow::tr("Bottom right");
  }
  return {};
}

// The stored names come from the Mac; on Linux the same keys are called so.
QString modifierName(CornerModifier modifier) {
  switch (modifier) {
    case CornerModifier::none:
      return SettingsWindow::tr("None", "no modifier key");
    case CornerModifier::command:
      return SettingsWindow::tr("Super");
    case CornerModifier::option:
      return SettingsWindow::tr("Alt");
    case CornerModifier::control:
      return SettingsWindow::tr("Ctrl");
    case CornerModifier::shift:
      return SettingsWindow::tr("Shift");
  }
  return {};
}

QString backgroundName(BackgroundStyle style) {
  switch (style) {
    case BackgroundStyle::blurredWallpaper:
      return SettingsWindow::tr("Blurred wallpaper");
    case BackgroundStyle::glass:
      return SettingsWindow::tr("Glass");
    case BackgroundStyle::solid:
      return SettingsWindow::tr("Solid colour");
  }
  return {};
}

QString layoutModeName(LayoutMode mode) {
  switch (mode) {
    case LayoutMode::paged:
      return SettingsWindow::tr("Pages");
    case LayoutMode::scroll:
      return SettingsWindow::tr("One scrolling list");
  }
  return {};
}

template <typename Value, std::size_t N>
void fillCombo(QComboBox* combo, const std::array<Value, N>& values, QString (*name)(Value)) {
  for (const Value value : values) combo->addItem(name(value), static_cast<int>(value));
}

template <typename Value>
void selectIn(QComboBox* combo, Value value) {
  const QSignalBlocker blocker(combo);
  combo->setCurrentIndex(combo->findData(static_cast<int>(value)));
}

QLabel* wrappedLabel(const QString& text, QWidget* parent) {
  auto* label = new QLabel(text, parent);
  label->setWordWrap(true);
  return label;
}

QLabel* noteLabel(const QString& text, QWidget* parent) {
  QLabel* label = wrappedLabel(text, parent);
  label->setForegroundRole(QPalette::PlaceholderText);
  return label;
}

// A pane: a bold heading, then its content, top-aligned; or, with `fill`,
// the content takes the height.
QWidget* makePane(const QString& heading, QLayout* content, bool fill = false) {
  auto* pane = new QWidget;
  auto* layout = new QVBoxLayout(pane);
  auto* title = new QLabel(heading, pane);
  QFont font = title->font();
  font.setBold(true);
  font.setPointSizeF(font.pointSizeF() * 1.25);
  title->setFont(font);
  title->setAccessibleName(heading);
  layout->addWidget(title);
  layout->addSpacing(6);
  layout->addLayout(content, fill ? 1 : 0);
  if (!fill) layout->addStretch(1);
  return pane;
}

QFormLayout* makeForm() {
  auto* form = new QFormLayout;
  form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
  form->setRowWrapPolicy(QFormLayout::DontWrapRows);
  return form;
}

}  // namespace

SettingsWindow::SettingsWindow(Services services, QWidget* parent)
    : QWidget(parent, Qt::Window), services_(std::move(services)) {
  setWindowTitle(tr("Orrery Settings"));
  setObjectName(QStringLiteral("settingsWindow"));

  paneList_ = new QListWidget(this);
  paneList_->setObjectName(QStringLiteral("paneList"));
  paneList_->setAccessibleName(tr("Settings pages"));
  paneList_->setSpacing(3);
  panes_ = new QStackedWidget(this);
  const std::pair<QString, QWidget*> pages[] = {
      {tr("General"), buildGeneral()},
      {tr("Trigger"), buildTrigger()},
      {tr("Appearance"), buildAppearance()},
      {tr("Hidden Apps"), buildHiddenApps()},
      {tr("Sync"), buildSync()},
      {tr("About"), buildAbout()},
  };
  for (const auto& [name, page] : pages) {
    paneList_->addItem(name);
    panes_->addWidget(page);
  }
  paneList_->setFixedWidth(std::max(160, paneList_->sizeHintForColumn(0) + 32));
  connect(paneList_, &QListWidget::currentRowChanged, panes_, &QStackedWidget::setCurrentIndex);
  paneList_->setCurrentRow(0);

  auto* layout = new QHBoxLayout(this);
  layout->addWidget(paneList_);
  layout->addWidget(panes_, 1);
  setMinimumSize(640, 440);

  connect(&services_.settings, &SettingsStore::settingsChanged, this, &SettingsWindow::refresh);
  connect(&services_.arrangement, &ArrangementController::layoutChanged, this,
          &SettingsWindow::refreshHiddenApps);
  connect(&services_.arrangement, &ArrangementController::storageProblemChanged, this,
          &SettingsWindow::refreshStorageProblem);
  connect(&services_.catalog, &AppCatalog::changed, this, &SettingsWindow::refreshHiddenApps);
  if (services_.launchAtLogin) {
    connect(services_.launchAtLogin, &LaunchAtLogin::messageChanged, this, &SettingsWindow::refresh);
  }
  refresh();
  refreshHiddenApps();
  refreshStorageProblem();
}

void SettingsWindow::showPane(Pane pane) { paneList_->setCurrentRow(static_cast<int>(pane)); }

SettingsWindow::Pane SettingsWindow::currentPane() const { return static_cast<Pane>(panes_->currentIndex()); }

void SettingsWindow::showEvent(QShowEvent* event) {
  // The user may have changed the autostart entry meanwhile.
  if (services_.launchAtLogin) services_.launchAtLogin->refresh();
  // A tray may have come or gone since.
  refresh();
  QWidget::showEvent(event);
  // The keyboard starts on the list of panes: the arrows choose one, Tab
  // goes into it.
  if (!focusWidget()) paneList_->setFocus(Qt::ActiveWindowFocusReason);
}

void SettingsWindow::edit(const std::function<void(Settings&)>& change) {
  Settings settings = services_.settings.settings();
  change(settings);
  services_.settings.setSettings(settings);
}

QWidget* SettingsWindow::buildGeneral() {
  auto* content = new QVBoxLayout;
  launchAtLogin_ = new QCheckBox(tr("Start Orrery when you log in"));
  launchAtLogin_->setObjectName(QStringLiteral("launchAtLogin"));
  launchAtLoginMessage_ = wrappedLabel({}, nullptr);
  launchAtLoginMessage_->setObjectName(QStringLiteral("launchAtLoginMessage"));
  if (services_.launchAtLogin) {
    connect(launchAtLogin_, &QCheckBox::toggled, this, [this](bool on) { services_.launchAtLogin->set(on); });
  } else {
    launchAtLogin_->setEnabled(false);
    launchAtLoginMessage_->setText(tr("Starting at login is not available on this system."));
  }
  content->addWidget(launchAtLogin_);
  content->addWidget(launchAtLoginMessage_);
  content->addSpacing(12);

  trayIcon_ = new QCheckBox(tr("Show Orrery's icon in the panel's tray"));
  trayIcon_->setObjectName(QStringLiteral("trayIcon"));
  connect(trayIcon_, &QCheckBox::toggled, this,
          [this](bool on) { edit([on](Settings& s) { s.showMenuBarIcon = on; }); });
  noTray_ = noteLabel(tr("This desktop has no tray for Orrery's icon."), nullptr);
  noTray_->setObjectName(QStringLiteral("noTray"));
  relaunchHint_ = noteLabel(
      tr("Settings open when you start Orrery again (for example from the application menu)."), nullptr);
  relaunchHint_->setObjectName(QStringLiteral("relaunchHint"));
  content->addWidget(trayIcon_);
  content->addWidget(noTray_);
  content->addWidget(relaunchHint_);
  content->addSpacing(12);

  storageProblem_ = wrappedLabel({}, nullptr);
  storageProblem_->setObjectName(QStringLiteral("storageProblem"));
  QPalette warning = storageProblem_->palette();
  warning.setColor(QPalette::WindowText, QColor(0xc0, 0x1c, 0x28));
  storageProblem_->setPalette(warning);
  content->addWidget(storageProblem_);
  return makePane(tr("General"), content);
}

QWidget* SettingsWindow::buildTrigger() {
  QFormLayout* form = makeForm();
  corner_ = new QComboBox;
  corner_->setObjectName(QStringLiteral("corner"));
  corner_->setAccessibleName(tr("Hot corner"));
  fillCombo(corner_, allCorners, cornerName);
  connect(corner_, &QComboBox::currentIndexChanged, this, [this] {
    const auto corner = static_cast<Corner>(corner_->currentData().toInt());
    edit([corner](Settings& s) { s.corner = corner; });
  });
  form->addRow(tr("Hot corner:"), corner_);

  cornerModifier_ = new QComboBox;
  cornerModifier_->setObjectName(QStringLiteral("cornerModifier"));
  cornerModifier_->setAccessibleName(tr("Key to hold in the corner"));
  fillCombo(cornerModifier_, allCornerModifiers, modifierName);
  connect(cornerModifier_, &QComboBox::currentIndexChanged, this, [this] {
    const auto modifier = static_cast<CornerModifier>(cornerModifier_->currentData().toInt());
    edit([modifier](Settings& s) { s.cornerModifier = modifier; });
  });
  form->addRow(tr("Only while holding:"), cornerModifier_);

  // The shortcut field (the stored shortcut, recorded anew with a click)
  // and its messages take this place.
  shortcutRecorderSlot_ = new QWidget;
  shortcutRecorderSlot_->setObjectName(QStringLiteral("shortcutRecorderSlot"));
  new QVBoxLayout(shortcutRecorderSlot_);
  shortcutRecorderSlot_->layout()->setContentsMargins(0, 0, 0, 0);
  form->addRow(tr("Keyboard shortcut:"), shortcutRecorderSlot_);
  form->addRow(noteLabel(tr("Any desktop can also show and hide Orrery with a shortcut of its own that runs "
                            "\u201correry --toggle\u201d."),
                         nullptr));
  return makePane(tr("Trigger"), form);
}

QWidget* SettingsWindow::buildAppearance() {
  QFormLayout* form = makeForm();
  columns_ = new QSpinBox;
  columns_->setObjectName(QStringLiteral("columns"));
  columns_->setAccessibleName(tr("Columns"));
  columns_->setRange(static_cast<int>(Settings::columnsRange.lowerBound),
                     static_cast<int>(Settings::columnsRange.upperBound));
  connect(columns_, &QSpinBox::valueChanged, this,
          [this](int value) { edit([value](Settings& s) { s.columns = value; }); });
  form->addRow(tr("Columns:"), columns_);

  rows_ = new QSpinBox;
  rows_->setObjectName(QStringLiteral("rows"));
  rows_->setAccessibleName(tr("Rows"));
  rows_->setRange(static_cast<int>(Settings::rowsRange.lowerBound),
                  static_cast<int>(Settings::rowsRange.upperBound));
  connect(rows_, &QSpinBox::valueChanged, this,
          [this](int value) { edit([value](Settings& s) { s.rows = value; }); });
  form->addRow(tr("Rows:"), rows_);

  auto* iconRow = new QHBoxLayout;
  iconSize_ = new QSlider(Qt::Horizontal);
  iconSize_->setObjectName(QStringLiteral("iconSize"));
  iconSize_->setAccessibleName(tr("Icon size"));
  iconSize_->setRange(static_cast<int>(Settings::iconSizeRange.lowerBound),
                      static_cast<int>(Settings::iconSizeRange.upperBound));
  iconSize_->setSingleStep(4);
  iconSize_->setPageStep(16);
  iconSizeValue_ = new QLabel;
  iconSizeValue_->setMinimumWidth(iconSizeValue_->fontMetrics().horizontalAdvance(tr("%1 px").arg(888)));
  connect(iconSize_, &QSlider::valueChanged, this,
          [this](int value) { edit([value](Settings& s) { s.iconSize = value; }); });
  iconRow->addWidget(iconSize_, 1);
  iconRow->addWidget(iconSizeValue_);
  form->addRow(tr("Icon size:"), iconRow);

  layoutMode_ = new QComboBox;
  layoutMode_->setObjectName(QStringLiteral("layoutMode"));
  layoutMode_->setAccessibleName(tr("Arrangement"));
  fillCombo(layoutMode_, allLayoutModes, layoutModeName);
  connect(layoutMode_, &QComboBox::currentIndexChanged, this, [this] {
    const auto mode = static_cast<LayoutMode>(layoutMode_->currentData().toInt());
    edit([mode](Settings& s) { s.layoutMode = mode; });
  });
  form->addRow(tr("Arrangement:"), layoutMode_);

  animations_ = new QCheckBox(tr("Animate showing, hiding and paging"));
  animations_->setObjectName(QStringLiteral("animations"));
  connect(animations_, &QCheckBox::toggled, this,
          [this](bool on) { edit([on](Settings& s) { s.animations = on; }); });
  form->addRow(tr("Animations:"), animations_);

  background_ = new QComboBox;
  background_->setObjectName(QStringLiteral("background"));
  background_->setAccessibleName(tr("Background"));
  fillCombo(background_, allBackgroundStyles, backgroundName);
  connect(background_, &QComboBox::currentIndexChanged, this, [this] {
    const auto style = static_cast<BackgroundStyle>(background_->currentData().toInt());
    edit([style](Settings& s) { s.background = style; });
  });
  form->addRow(tr("Background:"), background_);

  solidColour_ = new QPushButton;
  solidColour_->setObjectName(QStringLiteral("solidColour"));
  solidColour_->setAccessibleName(tr("Background colour"));
  connect(solidColour_, &QPushButton::clicked, this, [this] {
    const QColor current(QString::fromStdString(services_.settings.settings().solidColorHex));
    const QColor chosen = QColorDialog::getColor(current, this, tr("Background colour"));
    if (!chosen.isValid()) return;
    const std::string hex = chosen.name(QColor::HexRgb).toUpper().toStdString();
    edit([hex](Settings& s) { s.solidColorHex = hex; });
  });
  form->addRow(tr("Colour:"), solidColour_);
  return makePane(tr("Appearance"), form);
}

QWidget* SettingsWindow::buildHiddenApps() {
  auto* content = new QVBoxLayout;
  content->addWidget(noteLabel(tr("Hidden apps are not shown in Orrery. They stay installed."), nullptr));
  auto* list = new QWidget;
  hiddenRows_ = new QVBoxLayout(list);
  hiddenRows_->setContentsMargins(0, 0, 0, 0);
  hiddenRows_->addStretch(1);
  auto* scroll = new QScrollArea;
  hiddenList_ = scroll;
  scroll->setObjectName(QStringLiteral("hiddenApps"));
  scroll->setAccessibleName(tr("Hidden Apps"));
  scroll->setWidgetResizable(true);
  scroll->setWidget(list);
  scroll->setFrameShape(QFrame::StyledPanel);
  noHiddenApps_ = noteLabel(tr("No apps are hidden."), nullptr);
  noHiddenApps_->setObjectName(QStringLiteral("noHiddenApps"));
  content->addWidget(noHiddenApps_);
  content->addWidget(scroll, 1);
  // Takes the height only while the list is hidden.
  content->addStretch(0);
  return makePane(tr("Hidden Apps"), content, true);
}

QWidget* SettingsWindow::buildSync() {
  auto* content = new QVBoxLayout;
  auto* state = wrappedLabel(tr("Sync is not set up on this computer. Folders, order and settings are kept "
                                "on this computer only."),
                             nullptr);
  state->setObjectName(QStringLiteral("syncState"));
  content->addWidget(state);
  return makePane(tr("Sync"), content);
}

QWidget* SettingsWindow::buildAbout() {
  auto* content = new QVBoxLayout;
  auto* name = new QLabel(QStringLiteral("Orrery"));
  QFont font = name->font();
  font.setPointSizeF(font.pointSizeF() * 1.6);
  name->setFont(font);
  content->addWidget(name);
  auto* version = new QLabel(tr("Version %1").arg(QCoreApplication::applicationVersion()));
  version->setObjectName(QStringLiteral("version"));
  content->addWidget(version);
  content->addWidget(wrappedLabel(tr("A full-screen application launcher."), nullptr));
  content->addSpacing(12);
  // Captions above their values: a path is long and must not be cut.
  content->addWidget(new QLabel(tr("Data folder:")));
  auto* folder =
      wrappedLabel(QFile::decodeName(QByteArray::fromStdString(services_.dataDirectory.string())), nullptr);
  folder->setObjectName(QStringLiteral("dataFolder"));
  folder->setAccessibleName(tr("Data folder"));
  folder->setTextInteractionFlags(Qt::TextSelectableByKeyboard | Qt::TextSelectableByMouse);
  folder->setContentsMargins(12, 0, 0, 0);
  content->addWidget(folder);
  content->addSpacing(8);
  content->addWidget(new QLabel(tr("Licence:")));
  auto* licence = wrappedLabel(tr("Copyright © Lumenfold. All rights reserved."), nullptr);
  licence->setObjectName(QStringLiteral("licence"));
  licence->setContentsMargins(12, 0, 0, 0);
  content->addWidget(licence);
  return makePane(tr("About"), content);
}

void SettingsWindow::refresh() {
  const Settings& settings = services_.settings.settings();
  {
    const QSignalBlocker blocker(launchAtLogin_);
    launchAtLogin_->setChecked(settings.launchAtLogin);
  }
  if (services_.launchAtLogin) {
    QStringList lines;
    if (!services_.launchAtLogin->message().empty())
      lines << QString::fromStdString(services_.launchAtLogin->message());
    if (!services_.launchAtLogin->note().empty())
      lines << QString::fromStdString(services_.launchAtLogin->note());
    launchAtLoginMessage_->setText(lines.join(u'\n'));
    launchAtLoginMessage_->setVisible(!lines.isEmpty());
  }
  const bool tray = services_.trayAvailable && services_.trayAvailable();
  {
    const QSignalBlocker blocker(trayIcon_);
    trayIcon_->setChecked(settings.showMenuBarIcon);
  }
  // No switch that does nothing: without a tray only the fact is shown.
  trayIcon_->setVisible(tray);
  noTray_->setVisible(!tray);
  relaunchHint_->setVisible(!tray || !settings.showMenuBarIcon);

  selectIn(corner_, settings.corner);
  selectIn(cornerModifier_, settings.cornerModifier);
  cornerModifier_->setEnabled(settings.corner != Corner::none);

  const auto setSpin = [](QSpinBox* spin, std::int64_t value) {
    const QSignalBlocker blocker(spin);
    spin->setValue(static_cast<int>(value));
  };
  setSpin(columns_, settings.columns);
  setSpin(rows_, settings.rows);
  {
    const QSignalBlocker blocker(iconSize_);
    iconSize_->setValue(static_cast<int>(settings.iconSize));
  }
  iconSizeValue_->setText(tr("%1 px").arg(static_cast<int>(settings.iconSize)));
  selectIn(layoutMode_, settings.layoutMode);
  {
    const QSignalBlocker blocker(animations_);
    animations_->setChecked(settings.animations);
  }
  selectIn(background_, settings.background);
  const QString hex = QString::fromStdString(settings.solidColorHex);
  QPixmap swatch(28, 14);
  swatch.fill(QColor(hex).isValid() ? QColor(hex) : QColor(Qt::black));
  {
    QPainter painter(&swatch);
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(swatch.rect().adjusted(0, 0, -1, -1));
  }
  solidColour_->setIcon(QIcon(swatch));
  solidColour_->setIconSize(swatch.size());
  solidColour_->setText(hex);
  solidColour_->setEnabled(settings.background == BackgroundStyle::solid);
}

void SettingsWindow::refreshHiddenApps() {
  // Rebuilt whole: the list is short and changes seldom.
  while (hiddenRows_->count() > 1) {
    QLayoutItem* item = hiddenRows_->takeAt(0);
    if (QWidget* row = item->widget()) row->deleteLater();
    delete item;
  }
  struct Entry {
    std::string id;
    QString name;
    const AppInfo* app = nullptr;
  };
  std::vector<Entry> entries;
  const auto& apps = services_.catalog.apps();
  for (const std::string& id : services_.arrangement.layout().hidden) {
    const auto found = apps.find(id);
    const AppInfo* app = found == apps.end() ? nullptr : &found->second;
    entries.push_back({id, app ? QString::fromStdString(app->name) : QString::fromStdString(id), app});
  }
  std::ranges::sort(entries,
                    [](const Entry& a, const Entry& b) { return a.name.localeAwareCompare(b.name) < 0; });

  const int iconPixels = static_cast<int>(32 * devicePixelRatioF());
  int position = 0;
  for (const Entry& entry : entries) {
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(6, 4, 6, 4);
    auto* icon = new QLabel;
    icon->setFixedSize(32, 32);
    if (services_.icons && entry.app) {
      QImage image = services_.icons->image(*entry.app, iconPixels);
      image.setDevicePixelRatio(devicePixelRatioF());
      icon->setPixmap(QPixmap::fromImage(image));
    }
    auto* name = new QLabel(entry.name);
    auto* unhide = new QPushButton(tr("Unhide"));
    unhide->setObjectName(QStringLiteral("unhide:") + QString::fromStdString(entry.id));
    unhide->setAccessibleName(tr("Unhide %1").arg(entry.name));
    connect(unhide, &QPushButton::clicked, this, [this, id = entry.id] {
      services_.arrangement.mutate([&id](Layout& edited) { edited.unhide(id); });
    });
    layout->addWidget(icon);
    layout->addWidget(name, 1);
    layout->addWidget(unhide);
    hiddenRows_->insertWidget(position++, row);
  }
  noHiddenApps_->setVisible(entries.empty());
  hiddenList_->setVisible(!entries.empty());
}

void SettingsWindow::refreshStorageProblem() {
  const auto& problem = services_.arrangement.storageProblem();
  storageProblem_->setText(problem ? QString::fromStdString(*problem) : QString());
  storageProblem_->setVisible(problem.has_value());
}

}  // namespace orrery::app

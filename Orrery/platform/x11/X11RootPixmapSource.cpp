#include "Orrery/platform/x11/X11RootPixmapSource.h"

#include <xcb/xcb.h>

#include <QImage>

#include <cstring>
#include <string_view>

#include "Orrery/platform/x11/Freed.h"

namespace orrery::platform {
namespace {

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name, bool onlyIfExists) {
  const auto cookie =
      xcb_intern_atom(connection, onlyIfExists ? 1 : 0, static_cast<std::uint16_t>(name.size()), name.data());
  Freed<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(connection, cookie, nullptr));
  return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

xcb_screen_t* screenOf(xcb_connection_t* connection, int screenNumber) {
  xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
  xcb_screen_t* first = screens.rem > 0 ? screens.data : nullptr;
  for (int index = 0; screens.rem > 0; xcb_screen_next(&screens), ++index)
    if (index == screenNumber) return screens.data;
  return first;
}

// The pixmap a property of the root window names, or none.
xcb_pixmap_t pixmapIn(xcb_connection_t* connection, xcb_window_t root, xcb_atom_t property) {
  if (property == XCB_ATOM_NONE) return XCB_NONE;
  const auto cookie = xcb_get_property(connection, 0, root, property, XCB_ATOM_PIXMAP, 0, 1);
  Freed<xcb_get_property_reply_t> reply(xcb_get_property_reply(connection, cookie, nullptr));
  if (!reply || reply->type != XCB_ATOM_PIXMAP || reply->format != 32 ||
      xcb_get_property_value_length(reply.value) < 4)
    return XCB_NONE;
  xcb_pixmap_t pixmap = XCB_NONE;
  std::memcpy(&pixmap, xcb_get_property_value(reply.value), sizeof pixmap);
  return pixmap;
}

// The pixels of `pixmap`, read on a connection of its own.
std::expected<QImage, QString> readPixmap(const std::string& displayName, xcb_pixmap_t pixmap) {
  const QString name = QStringLiteral("X-Wurzelbild 0x%1").arg(pixmap, 0, 16);
  xcb_connection_t* connection = xcb_connect(displayName.empty() ? nullptr : displayName.c_str(), nullptr);
  const auto close = [connection] { xcb_disconnect(connection); };
  if (xcb_connection_has_error(connection) != 0) {
    close();
    return std::unexpected(name + QStringLiteral(": keine Verbindung zum X-Server"));
  }
  Freed<xcb_get_geometry_reply_t> geometry(
      xcb_get_geometry_reply(connection, xcb_get_geometry(connection, pixmap), nullptr));
  if (!geometry || geometry->width == 0 || geometry->height == 0) {
    close();
    return std::unexpected(name + QStringLiteral(": nicht mehr vorhanden"));
  }
  if (geometry->depth != 24 && geometry->depth != 32) {
    close();
    return std::unexpected(name + QStringLiteral(": Farbtiefe %1 nicht unterstützt").arg(geometry->depth));
  }
  const auto cookie = xcb_get_image(connection, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, 0, 0, geometry->width,
                                    geometry->height, ~std::uint32_t{0});
  Freed<xcb_get_image_reply_t> image(xcb_get_image_reply(connection, cookie, nullptr));
  const xcb_setup_t* setup = xcb_get_setup(connection);
  // 32 bits per pixel in the server's byte order, which must be ours.
  bool fourBytes = false;
  for (auto formats = xcb_setup_pixmap_formats_iterator(setup); formats.rem > 0; xcb_format_next(&formats))
    if (formats.data->depth == geometry->depth) fourBytes = formats.data->bits_per_pixel == 32;
  const bool ourOrder =
      (setup->image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST) == (Q_BYTE_ORDER == Q_LITTLE_ENDIAN);
  const int width = geometry->width;
  const int height = geometry->height;
  if (!image || !fourBytes || !ourOrder || xcb_get_image_data_length(image.value) < width * height * 4) {
    close();
    return std::unexpected(name + QStringLiteral(": Bildpunkte nicht lesbar"));
  }
  // Rows of 32-bit pixels, padded to the scanline unit: always 4 bytes here.
  QImage pixels(xcb_get_image_data(image.value), width, height, width * 4, QImage::Format_RGB32);
  QImage copy = pixels.copy();
  close();
  return copy;
}

}  // namespace

std::unique_ptr<X11RootPixmapSource> X11RootPixmapSource::open(const std::string& displayName) {
  int screenNumber = 0;
  xcb_connection_t* connection =
      xcb_connect(displayName.empty() ? nullptr : displayName.c_str(), &screenNumber);
  if (xcb_connection_has_error(connection) != 0) {
    xcb_disconnect(connection);
    return nullptr;
  }
  return std::unique_ptr<X11RootPixmapSource>(new X11RootPixmapSource(connection, displayName, screenNumber));
}

X11RootPixmapSource::X11RootPixmapSource(xcb_connection_t* connection, std::string displayName,
                                         int screenNumber)
    : connection_(connection), displayName_(std::move(displayName)) {
  const xcb_screen_t* screen = screenOf(connection_, screenNumber);
  root_ = screen != nullptr ? screen->root : XCB_NONE;
  rootPixmapAtom_ = atom(connection_, "_XROOTPMAP_ID", false);
  setRootAtom_ = atom(connection_, "ESETROOT_PMAP_ID", false);
  // This connection's own interest in the root window; Qt's is untouched.
  const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_change_window_attributes(connection_, root_, XCB_CW_EVENT_MASK, &events);
  xcb_flush(connection_);
  notifier_ = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection_), QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { readEvents(); });
}

X11RootPixmapSource::~X11RootPixmapSource() {
  notifier_.reset();
  xcb_disconnect(connection_);
}

void X11RootPixmapSource::readEvents() {
  bool changedPicture = false;
  while (const Freed event{xcb_poll_for_event(connection_)}) {
    if ((event->response_type & 0x7f) == XCB_PROPERTY_NOTIFY) {
      const auto* change = reinterpret_cast<const xcb_property_notify_event_t*>(event.value);
      if (change->atom == rootPixmapAtom_ || change->atom == setRootAtom_) changedPicture = true;
    }
  }
  if (xcb_connection_has_error(connection_) != 0) notifier_->setEnabled(false);
  if (changedPicture) announceChange();
}

std::optional<app::DesktopPicture> X11RootPixmapSource::current() {
  xcb_pixmap_t pixmap = pixmapIn(connection_, root_, rootPixmapAtom_);
  if (pixmap == XCB_NONE) pixmap = pixmapIn(connection_, root_, setRootAtom_);
  // Events that came in with the replies are queued inside xcb, where the
  // socket notifier does not see them: read them once this call is over.
  QMetaObject::invokeMethod(
      notifier_.get(), [this] { readEvents(); }, Qt::QueuedConnection);
  if (pixmap == XCB_NONE) return std::nullopt;
  const std::string displayName = displayName_;
  return app::DesktopPicture{QStringLiteral("x11-root-pixmap:0x%1").arg(pixmap, 0, 16),
                             [displayName, pixmap](QSize) { return readPixmap(displayName, pixmap); }};
}

bool X11RootPixmapSource::compositorRunning(xcb_connection_t* connection, int screenNumber) {
  if (connection == nullptr) return false;
  const std::string name = "_NET_WM_CM_S" + std::to_string(screenNumber);
  const xcb_atom_t selection = atom(connection, name, true);
  if (selection == XCB_ATOM_NONE) return false;
  Freed<xcb_get_selection_owner_reply_t> owner(
      xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, selection), nullptr));
  return owner && owner->owner != XCB_NONE;
}

}  // namespace orrery::platform

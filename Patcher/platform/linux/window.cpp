#include "platform/window.h"

#include <algorithm>
#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <filesystem>
#include <new>
#include <optional>
#include <utility>

#include <gdk/gdkx.h>
#include <gtk/gtk.h>

#include "platform/mutex.h"
#include "platform/resources.h"
#include "platform/text.h"

namespace platform {
namespace {

/// Longest time for queued messages before the loop handles input and drawing again.
constexpr std::chrono::milliseconds kMessageTurn{4};

struct Edge {
  WindowPart part;
  GdkWindowEdge edge;
  const char* cursor;
};

constexpr Edge kEdges[] = {
    {WindowPart::kLeft, GDK_WINDOW_EDGE_WEST, "w-resize"},
    {WindowPart::kRight, GDK_WINDOW_EDGE_EAST, "e-resize"},
    {WindowPart::kTop, GDK_WINDOW_EDGE_NORTH, "n-resize"},
    {WindowPart::kTopLeft, GDK_WINDOW_EDGE_NORTH_WEST, "nw-resize"},
    {WindowPart::kTopRight, GDK_WINDOW_EDGE_NORTH_EAST, "ne-resize"},
    {WindowPart::kBottom, GDK_WINDOW_EDGE_SOUTH, "s-resize"},
    {WindowPart::kBottomLeft, GDK_WINDOW_EDGE_SOUTH_WEST, "sw-resize"},
    {WindowPart::kBottomRight, GDK_WINDOW_EDGE_SOUTH_EAST, "se-resize"},
};

const Edge* EdgeOf(WindowPart part) {
  const auto edge = std::ranges::find(kEdges, part, &Edge::part);
  return edge != std::end(kEdges) ? edge : nullptr;
}

GdkDevice* PointerOf(GdkDisplay* display) {
  return gdk_seat_get_pointer(gdk_display_get_default_seat(display));
}

/// Without a graphics device, the web view's accelerated drawing would show nothing.
void AvoidMissingGraphicsDevice() {
  std::error_code error;
  if (!std::filesystem::exists("/dev/dri/renderD128", error)) {
    setenv("WEBKIT_DISABLE_DMABUF_RENDERER", "1", 0);
  }
}

void ShowIcon(GtkWindow* window, int number) {
  const std::span<const std::byte> picture = EmbeddedResource(number);
  GdkPixbufLoader* loader = gdk_pixbuf_loader_new();
  if (gdk_pixbuf_loader_write(loader, reinterpret_cast<const guchar*>(picture.data()), picture.size(),
                              nullptr) &&
      gdk_pixbuf_loader_close(loader, nullptr)) {
    gtk_window_set_icon(window, gdk_pixbuf_loader_get_pixbuf(loader));
  }
  g_object_unref(loader);
}

}  // namespace

struct NativeWindow::Impl {
  explicit Impl(WindowOwner& windowOwner) : owner(windowOwner) {}

  WindowOwner& owner;
  GtkWidget* window = nullptr;  // null again after it is destroyed
  Size size;                    // as last reported to the owner
  Size restoredSize;
  std::optional<int> exitCode;
  GtkGesture* press = nullptr;  // the primary button, from press to release
  bool pointerWatched = false;

  Mutex lock;
  std::deque<QueueMessage> messages PATCHER_GUARDED_BY(lock);
  bool turnScheduled PATCHER_GUARDED_BY(lock) = false;

  GdkWindow* Surface() const { return window != nullptr ? gtk_widget_get_window(window) : nullptr; }
  GdkWindowState State() const {
    return Surface() != nullptr ? gdk_window_get_state(Surface()) : GdkWindowState{};
  }
  SizeKind Kind() const;
  Rect Place() const;
  PointerState Pointer(bool pressed) const;
  void RememberRestoredSize();
  const Edge* EdgeAt(double rootX, double rootY) const;

  void ConnectEvents();
  void PaintBackground(const WindowLook& look) const;
  std::optional<QueueMessage> NextMessage();

  static gboolean HandleMessages(gpointer data);
  static gboolean OnConfigure(GtkWidget* widget, GdkEventConfigure* event, gpointer data);
  static gboolean OnState(GtkWidget* widget, GdkEventWindowState* event, gpointer data);
  static gboolean OnButton(GtkWidget* widget, GdkEventButton* event, gpointer data);
  static gboolean OnMotion(GtkWidget* widget, GdkEventMotion* event, gpointer data);
  static gboolean OnLeave(GtkWidget* widget, GdkEventCrossing* event, gpointer data);
  static void OnDestroy(GtkWidget* widget, gpointer data);
  static void OnPressMoved(GtkGestureDrag* press, double x, double y, gpointer data);
  static void OnPressEnded(GtkGestureDrag* press, double x, double y, gpointer data);
};

SizeKind NativeWindow::Impl::Kind() const {
  if ((State() & GDK_WINDOW_STATE_ICONIFIED) != 0) return SizeKind::kMinimized;
  return (State() & GDK_WINDOW_STATE_MAXIMIZED) != 0 ? SizeKind::kMaximized : SizeKind::kRestored;
}

Rect NativeWindow::Impl::Place() const {
  int left = 0;
  int top = 0;
  gdk_window_get_origin(Surface(), &left, &top);
  return {left, top, left + size.width, top + size.height};
}

PointerState NativeWindow::Impl::Pointer(bool pressed) const {
  PointerState pointer;
  pointer.leftDown = pressed;
  gdk_device_get_position(PointerOf(gdk_window_get_display(Surface())), nullptr, &pointer.position.x,
                          &pointer.position.y);
  int distance = 0;
  g_object_get(gtk_widget_get_settings(window), "gtk-dnd-drag-threshold", &distance, nullptr);
  pointer.dragDistance = {distance, distance};
  return pointer;
}

/// A window manager may resize a window before it reports that the window is maximized, so a size that fills
/// the work area is not stored.
void NativeWindow::Impl::RememberRestoredSize() {
  GdkRectangle area{};
  gdk_monitor_get_workarea(gdk_display_get_monitor_at_window(gdk_window_get_display(Surface()), Surface()),
                           &area);
  const bool fills = size.width >= area.width && size.height >= area.height;
  if (Kind() == SizeKind::kRestored && !fills) restoredSize = size;
}

const Edge* NativeWindow::Impl::EdgeAt(double rootX, double rootY) const {
  const Point point{static_cast<int>(rootX), static_cast<int>(rootY)};
  return EdgeOf(owner.HitTest(Place(), point, Kind() == SizeKind::kMaximized));
}

void NativeWindow::Impl::ConnectEvents() {
  gtk_widget_add_events(window, GDK_BUTTON_PRESS_MASK | GDK_POINTER_MOTION_MASK | GDK_LEAVE_NOTIFY_MASK);
  const auto connect = [this](const char* signal, auto handler) {
    g_signal_connect(window, signal, G_CALLBACK(handler), this);
  };
  connect("configure-event", &OnConfigure);
  connect("window-state-event", &OnState);
  connect("button-press-event", &OnButton);
  connect("motion-notify-event", &OnMotion);
  connect("leave-notify-event", &OnLeave);
  connect("destroy", &OnDestroy);
  press = gtk_gesture_drag_new(window);
  gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(press), GTK_PHASE_CAPTURE);
  g_signal_connect(press, "drag-update", G_CALLBACK(&OnPressMoved), this);
  g_signal_connect(press, "drag-end", G_CALLBACK(&OnPressEnded), this);
}

void NativeWindow::Impl::PaintBackground(const WindowLook& look) const {
  char style[64];
  std::snprintf(style, sizeof style, "window { background: #%02x%02x%02x; }", look.background.red,
                look.background.green, look.background.blue);
  GtkCssProvider* provider = gtk_css_provider_new();
  gtk_css_provider_load_from_data(provider, style, -1, nullptr);
  gtk_style_context_add_provider(gtk_widget_get_style_context(window), GTK_STYLE_PROVIDER(provider),
                                 GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  g_object_unref(provider);
}

std::optional<QueueMessage> NativeWindow::Impl::NextMessage() {
  const MutexLock guard(lock);
  if (messages.empty()) {
    turnScheduled = false;
    return std::nullopt;
  }
  const QueueMessage message = messages.front();
  messages.pop_front();
  return message;
}

gboolean NativeWindow::Impl::HandleMessages(gpointer data) {
  auto* self = static_cast<Impl*>(data);
  const auto end = std::chrono::steady_clock::now() + kMessageTurn;
  while (!self->exitCode && std::chrono::steady_clock::now() < end) {
    const std::optional<QueueMessage> message = self->NextMessage();
    if (!message) return G_SOURCE_REMOVE;
    self->owner.WindowMessage(*message);
  }
  return self->exitCode ? G_SOURCE_REMOVE : G_SOURCE_CONTINUE;
}

gboolean NativeWindow::Impl::OnConfigure(GtkWidget*, GdkEventConfigure* event, gpointer data) {
  auto* self = static_cast<Impl*>(data);
  const Size now{event->width, event->height};
  if (now == self->size) return FALSE;
  self->size = now;
  self->RememberRestoredSize();
  self->owner.WindowResized(self->Kind());
  return FALSE;
}

gboolean NativeWindow::Impl::OnState(GtkWidget*, GdkEventWindowState* event, gpointer data) {
  auto* self = static_cast<Impl*>(data);
  if ((event->changed_mask & (GDK_WINDOW_STATE_MAXIMIZED | GDK_WINDOW_STATE_ICONIFIED)) != 0) {
    self->owner.WindowResized(self->Kind());
  }
  return FALSE;
}

gboolean NativeWindow::Impl::OnButton(GtkWidget*, GdkEventButton* event, gpointer data) {
  auto* self = static_cast<Impl*>(data);
  if (event->window != self->Surface() || event->button != GDK_BUTTON_PRIMARY) return FALSE;
  const Edge* edge = self->EdgeAt(event->x_root, event->y_root);
  if (edge == nullptr) return FALSE;
  gtk_window_begin_resize_drag(GTK_WINDOW(self->window), edge->edge, static_cast<int>(event->button),
                               static_cast<int>(event->x_root), static_cast<int>(event->y_root), event->time);
  return TRUE;
}

gboolean NativeWindow::Impl::OnMotion(GtkWidget*, GdkEventMotion* event, gpointer data) {
  auto* self = static_cast<Impl*>(data);
  if (event->window != self->Surface()) return FALSE;
  const Edge* edge = self->EdgeAt(event->x_root, event->y_root);
  GdkCursor* cursor = gdk_cursor_new_from_name(gdk_window_get_display(event->window),
                                               edge != nullptr ? edge->cursor : "default");
  gdk_window_set_cursor(event->window, cursor);
  if (cursor != nullptr) g_object_unref(cursor);
  return FALSE;
}

gboolean NativeWindow::Impl::OnLeave(GtkWidget*, GdkEventCrossing* event, gpointer data) {
  if (event->window == static_cast<Impl*>(data)->Surface()) gdk_window_set_cursor(event->window, nullptr);
  return FALSE;
}

void NativeWindow::Impl::OnDestroy(GtkWidget*, gpointer data) {
  auto* self = static_cast<Impl*>(data);
  self->window = nullptr;
  if (!self->exitCode) self->exitCode = 0;
  if (gtk_main_level() > 0) gtk_main_quit();
}

void NativeWindow::Impl::OnPressMoved(GtkGestureDrag*, double, double, gpointer data) {
  auto* self = static_cast<Impl*>(data);
  if (self->pointerWatched) self->owner.PointerWatched(self->Pointer(true));
}

void NativeWindow::Impl::OnPressEnded(GtkGestureDrag*, double, double, gpointer data) {
  auto* self = static_cast<Impl*>(data);
  if (self->pointerWatched) self->owner.PointerWatched(self->Pointer(false));
}

bool PrepareWindowSystem(int argc, char** argv) {
  AvoidMissingGraphicsDevice();
  // Use the player's language for text, but not for the format of numbers.
  gtk_disable_setlocale();
  std::setlocale(LC_CTYPE, "");
  return gtk_init_check(&argc, &argv) != 0;
}

void FinishWindowSystem() {}

Rect WorkAreaUnderPointer() {
  GdkDisplay* display = gdk_display_get_default();
  int x = 0;
  int y = 0;
  gdk_device_get_position(PointerOf(display), nullptr, &x, &y);
  GdkRectangle area{};
  gdk_monitor_get_workarea(gdk_display_get_monitor_at_point(display, x, y), &area);
  return {area.x, area.y, area.x + area.width, area.y + area.height};
}

NativeWindow::NativeWindow(WindowOwner& owner) : impl_(std::make_unique<Impl>(owner)) {}

NativeWindow::~NativeWindow() = default;

bool NativeWindow::Create(const WindowLook& look, const Rect& placement) {
  impl_->window = gtk_window_new(GTK_WINDOW_TOPLEVEL);
  GtkWindow* window = GTK_WINDOW(impl_->window);
  gtk_window_set_title(window, WideToUtf8(look.title).c_str());
  gtk_window_set_decorated(window, FALSE);
  ShowIcon(window, look.icon);
  impl_->PaintBackground(look);
  const Size minimum = impl_->owner.MinimumWindowSize(WorkAreaUnderPointer());
  GdkGeometry geometry{};
  geometry.min_width = minimum.width;
  geometry.min_height = minimum.height;
  gtk_window_set_geometry_hints(window, nullptr, &geometry, GDK_HINT_MIN_SIZE);
  gtk_window_set_default_size(window, placement.Width(), placement.Height());
  gtk_window_move(window, placement.left, placement.top);
  impl_->size = {placement.Width(), placement.Height()};
  impl_->restoredSize = impl_->size;
  impl_->ConnectEvents();
  gtk_widget_realize(impl_->window);
  impl_->owner.WindowCreated();
  return true;
}

void NativeWindow::Show() { gtk_widget_show_all(impl_->window); }

bool NativeWindow::Post(const QueueMessage& message) noexcept {
  try {
    const MutexLock guard(impl_->lock);
    impl_->messages.push_back(message);
    if (!std::exchange(impl_->turnScheduled, true)) {
      // Lower priority than input and drawing: many messages must not freeze the window.
      g_idle_add_full(G_PRIORITY_DEFAULT_IDLE, &Impl::HandleMessages, impl_.get(), nullptr);
    }
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

int NativeWindow::RunMessageLoop() {
  if (!impl_->exitCode) gtk_main();
  return impl_->exitCode.value_or(0);
}

void NativeWindow::Quit(int code) {
  impl_->exitCode = code;
  if (gtk_main_level() > 0) gtk_main_quit();
}

bool NativeWindow::IsMaximized() const { return (impl_->State() & GDK_WINDOW_STATE_MAXIMIZED) != 0; }

Rect NativeWindow::ClientRect() const { return {0, 0, impl_->size.width, impl_->size.height}; }

Rect NativeWindow::Place() const { return impl_->Place(); }

Size NativeWindow::RestoredSize() const { return impl_->restoredSize; }

PointerState NativeWindow::Pointer() const {
  if (impl_->window == nullptr) return {};
  return impl_->Pointer(gtk_gesture_is_active(impl_->press) != 0);
}

void NativeWindow::WatchPointer(bool watch) { impl_->pointerWatched = watch; }

void NativeWindow::StartMoving() {
  const Point pointer = Pointer().position;
  gtk_window_begin_move_drag(GTK_WINDOW(impl_->window), GDK_BUTTON_PRIMARY, pointer.x, pointer.y,
                             gtk_get_current_event_time());
}

void NativeWindow::Minimize() { gtk_window_iconify(GTK_WINDOW(impl_->window)); }

void NativeWindow::Maximize() { gtk_window_maximize(GTK_WINDOW(impl_->window)); }

void NativeWindow::Restore() { gtk_window_unmaximize(GTK_WINDOW(impl_->window)); }

void NativeWindow::RestoreTo(const Rect& place) {
  if (!GDK_IS_X11_WINDOW(impl_->Surface())) return;
  gtk_window_unmaximize(GTK_WINDOW(impl_->window));
  // Move now, not with the next layout: the request to move the window with the pointer comes next.
  gdk_window_move(impl_->Surface(), place.left, place.top);
}

void NativeWindow::ShowProgress(const TaskProgress&) {}

void NativeWindow::AskToClose() { gtk_window_close(GTK_WINDOW(impl_->window)); }

void* NativeWindow::Handle() const { return impl_->window; }

}  // namespace platform

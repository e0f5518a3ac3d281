#include "platform/error_box.h"

#include <gtk/gtk.h>

#include "platform/standard_streams.h"
#include "platform/text.h"

namespace platform {

void ShowErrorBox(const std::u16string& text, const std::u16string& title) {
  const std::string narrowText = WideToUtf8(text);
  const std::string narrowTitle = WideToUtf8(title);
  if (gdk_display_get_default() == nullptr) {
    // There is no screen.
    WriteErrorLine(narrowTitle + ": " + narrowText);
    return;
  }
  GtkWidget* box = gtk_message_dialog_new(nullptr, GTK_DIALOG_MODAL, GTK_MESSAGE_ERROR, GTK_BUTTONS_OK, "%s",
                                          narrowText.c_str());
  gtk_window_set_title(GTK_WINDOW(box), narrowTitle.c_str());
  gtk_dialog_run(GTK_DIALOG(box));
  gtk_widget_destroy(box);
}

}  // namespace platform

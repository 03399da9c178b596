#include "Orrery/platform/gio/GioAppOpener.h"

#include <fcntl.h>
#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <optional>
#include <string>
#include <system_error>

#include "Orrery/platform/posix/OpenFolder.h"

namespace orrery::platform {

namespace {

using app::LaunchFailure;

// Far beyond any real entry; the same bound the scan reads entries with.
constexpr off_t kMaxEntryBytes = 4 * 1024 * 1024;

struct ObjectUnref {
  void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename T>
using GObjectPtr = std::unique_ptr<T, ObjectUnref>;

auto failure(LaunchFailure::Reason reason, std::string detail) {
  return Unexpected(LaunchFailure{reason, std::move(detail)});
}

// Runs in the new process between fork and exec, so only async-signal-safe
// calls. Handlers we installed are gone after exec anyway, but an ignored
// signal stays ignored and a blocked one stays blocked, and the program
// would inherit whatever the spawning thread had: Qt ignores SIGPIPE once
// it opens a local socket, which would make a pipeline in a terminal
// started from here print "Broken pipe" instead of ending quietly.
void resetSignals(gpointer) {
  struct sigaction standard {};
  standard.sa_handler = SIG_DFL;
  sigemptyset(&standard.sa_mask);
  // SIGKILL, SIGSTOP and the C library's own signals refuse; that is fine.
  for (int signal = 1; signal < NSIG; ++signal) ::sigaction(signal, &standard, nullptr);
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

LaunchFailure::Reason reasonOf(const GError& error) {
  if (error.domain != G_SPAWN_ERROR) return LaunchFailure::Reason::other;
  switch (error.code) {
    case G_SPAWN_ERROR_NOENT:
    case G_SPAWN_ERROR_NOTDIR:
      return LaunchFailure::Reason::programMissing;
    case G_SPAWN_ERROR_ACCES:
    case G_SPAWN_ERROR_PERM:
    case G_SPAWN_ERROR_NOEXEC:
    case G_SPAWN_ERROR_ISDIR:
    case G_SPAWN_ERROR_LIBBAD:
      return LaunchFailure::Reason::programNotExecutable;
    default:
      return LaunchFailure::Reason::other;
  }
}

// Why `program` (from Exec or TryExec) can't run, if it can't: missing, or
// there but no executable file. A bare name is looked up in PATH, as GIO does.
std::optional<LaunchFailure> programProblem(const std::string& program) {
  if (program.find('/') == std::string::npos) {
    gchar* found = g_find_program_in_path(program.c_str());
    if (found != nullptr) {
      g_free(found);
      return std::nullopt;
    }
    return LaunchFailure{LaunchFailure::Reason::programMissing, "Programm nicht im PATH: " + program};
  }
  struct stat status {};
  if (::stat(program.c_str(), &status) != 0) {
    const std::string text = std::system_category().message(errno);
    return LaunchFailure{LaunchFailure::Reason::programMissing, "Programm fehlt: " + program + ": " + text};
  }
  // access() lets root execute anything, even a file without execute bits.
  if (!S_ISREG(status.st_mode) || (status.st_mode & 0111) == 0 || ::access(program.c_str(), X_OK) != 0)
    return LaunchFailure{LaunchFailure::Reason::programNotExecutable,
                         "Programm nicht ausführbar: " + program};
  return std::nullopt;
}

// GIO refuses an entry without saying why: one it cannot parse, one that
// is no application, and one whose TryExec or Exec program cannot run right
// now all come back as nothing. The entry's bytes tell the user which.
LaunchFailure whyRefused(const std::string& bytes) {
  constexpr const char* group = "Desktop Entry";
  const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> file(g_key_file_new(), &g_key_file_unref);
  GError* error = nullptr;
  if (bytes.empty() ||
      !g_key_file_load_from_data(file.get(), bytes.data(), bytes.size(), G_KEY_FILE_NONE, &error)) {
    LaunchFailure failure{LaunchFailure::Reason::entryInvalid,
                          error == nullptr ? "Eintrag leer" : error->message};
    if (error != nullptr) g_error_free(error);
    return failure;
  }
  auto value = [&](const char* key) -> std::string {
    gchar* text = g_key_file_get_string(file.get(), group, key, nullptr);
    std::string result = text == nullptr ? "" : text;
    g_free(text);
    return result;
  };
  if (const std::string tryExec = value("TryExec"); !tryExec.empty()) {
    if (auto problem = programProblem(tryExec)) return *problem;
  }
  const std::string exec = value("Exec");
  gchar** argv = nullptr;
  if (!exec.empty() && g_shell_parse_argv(exec.c_str(), nullptr, &argv, nullptr)) {
    const std::string program = argv[0];
    g_strfreev(argv);
    if (auto problem = programProblem(program)) return *problem;
  }
  return {LaunchFailure::Reason::entryInvalid, "GIO liest den Eintrag nicht als App (Type, Exec)"};
}

// The entry's bytes, or why there are none. A vanished entry is told apart
// from a broken one: the app was uninstalled, and the catalog drops it soon.
Expected<std::string, LaunchFailure> readEntry(const std::string& path) {
  std::string bytes;
  if (readWholeFile({AT_FDCWD, path.c_str()}, kMaxEntryBytes, bytes)) return bytes;
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) {
    const int error = errno;
    const std::string text = std::system_category().message(error);
    if (error == ENOENT || error == ENOTDIR)
      return failure(LaunchFailure::Reason::entryMissing, "Eintrag fehlt: " + text);
    return failure(LaunchFailure::Reason::entryInvalid, "Eintrag nicht lesbar: " + text);
  }
  if (!S_ISREG(status.st_mode))
    return failure(LaunchFailure::Reason::entryInvalid, "Eintrag ist keine Datei");
  return failure(LaunchFailure::Reason::entryInvalid, "Eintrag nicht lesbar oder zu groß");
}

}  // namespace

Expected<std::monostate, LaunchFailure> GioAppOpener::open(const AppInfo& app) const {
  // GIO reads the entry holding a lock that every GDesktopAppInfo of the
  // process shares, so an entry on a mount that stopped answering would
  // stall every launch after it. Reading it here first, without the lock,
  // leaves the stall to this launch alone; GIO then finds the file in the
  // page cache. Anything but a plain file goes no further, since GIO would
  // block on a FIFO as well.
  const auto bytes = readEntry(app.url);
  if (!bytes) return Unexpected(bytes.error());

  GObjectPtr<GDesktopAppInfo> info(g_desktop_app_info_new_from_filename(app.url.c_str()));
  if (!info) return Unexpected(whyRefused(*bytes));

  GObjectPtr<GAppLaunchContext> context(g_app_launch_context_new());
  // Tokens the session gave us for our own start; a program that inherited
  // one would hand the window manager a stale, already used ID.
  g_app_launch_context_unsetenv(context.get(), "DESKTOP_STARTUP_ID");
  g_app_launch_context_unsetenv(context.get(), "XDG_ACTIVATION_TOKEN");

  // Without G_SPAWN_DO_NOT_REAP_CHILD GLib spawns through an intermediate
  // process that it waits for before returning, and the program is orphaned
  // to the session's reaper: nothing of it is ever ours to reap.
  GError* error = nullptr;
  const bool started =
      g_desktop_app_info_launch_uris_as_manager(info.get(), nullptr, context.get(), G_SPAWN_SEARCH_PATH,
                                                resetSignals, nullptr, nullptr, nullptr, &error);
  if (started) return std::monostate{};
  const std::unique_ptr<GError, decltype(&g_error_free)> owned(error, &g_error_free);
  if (error == nullptr) return failure(LaunchFailure::Reason::other, "");
  return failure(reasonOf(*error), error->message);
}

}  // namespace orrery::platform

#include "integrity/check.h"

#include <exception>
#include <string>
#include <vector>

#include "control/protocol/page_messages.h"
#include "control/protocol/ui_event.h"
#include "integrity/damaged_files.h"
#include "integrity/digest/sha256.h"
#include "integrity/retained_check.h"
#include "integrity/verify_files.h"
#include "shared/own_files.h"
#include "shared/program.h"
#include "transport/config.h"
#include "transport/debug_log.h"
#include "transport/http_session.h"
#include "update/install_lock.h"
#include "update/local_record.h"
#include "update/patch_manifest.h"
#include "update/server_manifest.h"

namespace patcher {
namespace {

constexpr char kUnreachable[] = "serveur injoignable";
constexpr char kUnreadable[] = "manifeste illisible";

class CheckOperation {
 public:
  CheckOperation(HostWindow& window, bool repair, const UpdateStages& stages)
      : window_(window), repair_(repair), stages_(stages) {}
  ~CheckOperation() { session_.Close(); }
  CheckOperation(const CheckOperation&) = delete;
  CheckOperation& operator=(const CheckOperation&) = delete;

  /// True if the caller has to post `ready`.
  bool Run() {
    Status(repair_ ? "Reparation : connexion au serveur de patch..."
                   : "Verification : connexion au serveur de patch...");
    PatchManifest manifest;
    if (!FetchManifest(manifest)) return true;
    PostServer(window_, true);
    const CheckResult result = Examine(manifest);
    ReportSummary(result);
    PostCheck(BuildCheckMessage(Mode(), result));
    if (!repair_) return true;
    if (result.samples.empty()) {
      Status("Rien a reparer.");
      return true;
    }
    if (!Discard(result)) return true;
    RetainedCheck::Current().Clear();
    Status("Retelechargement de " + std::to_string(result.samples.size()) + " fichier(s)...");
    RunUpdate(window_, stages_);
    return false;
  }

  /// Reports an exception, and ends the page's busy state.
  void ReportUnexpectedFailure() {
    Status(repair_ ? "La reparation a rencontre une erreur inattendue."
                   : "La verification a rencontre une erreur inattendue.");
    PostCheck(BuildCheckErrorMessage(Mode(), kUnreadable));
  }

 private:
  const char* Mode() const { return repair_ ? "repair" : "verify"; }

  void Status(const std::string& text) { PostStatus(window_, text); }

  /// Posts the `check` message, unless it was posted before.
  void PostCheck(const std::string& message) {
    if (checkPosted_) return;
    PostNarrowJson(window_, message);
    checkPosted_ = true;
  }

  void ReportFailure(const std::string& status, const char* error) {
    Status(status);
    PostServer(window_, false);
    PostCheck(BuildCheckErrorMessage(Mode(), error));
  }

  bool FetchManifest(PatchManifest& manifest) {
    std::string error;
    if (!session_.Connect(PatchConfig::Current().baseUrl, error)) {
      ReportFailure(error, kUnreachable);
      return false;
    }
    std::string text;
    LocalRecord record(ExeDir() / kRecordFile);
    if (FetchServerManifest(session_, record, text, manifest) != ServerManifest::kGood) {
      ReportFailure("Impossible de lire le manifeste de patch.", kUnreadable);
      return false;
    }
    return true;
  }

  CheckResult Examine(const PatchManifest& manifest) {
    CheckResult result;
    RetainedCheck& retained = RetainedCheck::Current();
    if (repair_ && retained.Recall(manifest, result)) {
      Status("Reprise du resultat de la verification (" + std::to_string(result.samples.size()) +
             " fichier(s)).");
      return result;
    }
    Status("Verification de " + std::to_string(manifest.files.size()) + " fichiers...");
    VerifyFiles(window_, manifest, result);
    retained.Store(result, manifest.version);
    return result;
  }

  void ReportSummary(const CheckResult& result) {
    std::string text = std::to_string(result.ok) + " fichier(s) corrects";
    if (result.missing != 0) text += ", " + std::to_string(result.missing) + " manquant(s)";
    if (result.corrupt != 0) text += ", " + std::to_string(result.corrupt) + " abime(s)";
    Status(text + ".");
  }

  /// False, after a status line and without deleting a file, if another launcher uses the directory for too
  /// long or if the record cannot be changed.
  bool Discard(const CheckResult& result) {
    // Raises if the system has no SHA-256. Without it the run could neither verify nor fetch a file.
    const Sha256 provider;
    const InstallLock lock(window_, stages_.lockTimeout);
    if (!lock.IsTaken()) return false;
    if (DiscardDamagedFiles(result)) return true;
    Status("Impossible de mettre a jour patch_manifest.json, aucun fichier modifie.");
    return false;
  }

  HostWindow& window_;
  const bool repair_;
  const UpdateStages& stages_;
  HttpSession session_;
  bool checkPosted_ = false;
};

}  // namespace

void RunCheckOperation(HostWindow& window, bool repair, const UpdateStages& stages) {
  {
    CheckOperation operation(window, repair, stages);
    try {
      if (!operation.Run()) return;
    } catch (const std::exception& failure) {
      DebugLog::WriteException("the check", failure);
      operation.ReportUnexpectedFailure();
    }
    // The operation ends here, which closes its session before `ready` is posted.
  }
  PostReady(window, stages.clientExists());
}

}  // namespace patcher

#include "platform/database/odbc/odbc_account.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "platform/automation/conversion.h"
#include "platform/database/odbc/link.h"

namespace rebate {
namespace {

// The rows as texts in an order of their own: a server may give them in another order each time.
std::vector<Text> RowTexts(const Ref<RowSet>& rows) {
  std::vector<Text> texts(rows ? rows->row_count() : 0);
  for (std::size_t row = 0; row < texts.size(); ++row) {
    for (std::size_t field = 0; field < rows->names().size(); ++field) {
      const Variant& cell = rows->Cell(row, field);
      const Text text = cell.IsNull() ? Text() : ToText(cell);
      texts[row] += (cell.IsNull() ? '-' : '+') + std::to_string(text.size()) + ':' + text;
    }
  }
  std::sort(texts.begin(), texts.end());
  return texts;
}

bool SameRows(const Ref<RowSet>& left, const Ref<RowSet>& right) {
  return RowTexts(left) == RowTexts(right);
}

class OdbcConnection : public Connection {
 public:
  explicit OdbcConnection(const Text& connection_text)
      : settings_(odbc::Settings::Parse(connection_text)), link_(std::make_unique<odbc::Link>(settings_)) {}
  ~OdbcConnection() override { RollbackWork(); }

  RecordsetRef Execute(std::string_view text) override { return Run(text, nullptr); }
  void ExecuteFor(std::string_view text, BatchListener& listener) override { Run(text, &listener); }

  // Inserts of constants go together. Only those in a unit that has begun: what begins one, or stands by itself, may
  // meet a connection that was closed while idle.
  void ExecuteEach(std::span<const Text> texts, std::size_t& done) override {
    for (done = 0; done < texts.size();) {
      const std::size_t joined = unit_ == Unit::Begun ? CountJoinable(texts.subspan(done)) : 0;
      if (joined > 1) {
        RunJoined(texts.subspan(done, joined), done);
      } else {
        Run(texts[done], nullptr);
        ++done;
      }
    }
  }

  void BeginWork() override {
    RollbackWork();
    if (link_ && link_->IsDead()) link_ = nullptr;
    NeedLink();
    unit_ = Unit::Ready;
    work_stands_ = false;
  }

  void CommitWork() override {
    const Unit unit = std::exchange(unit_, Unit::None);
    reads_.clear();
    if (unit == Unit::Lost) ThrowLost();
    if (unit != Unit::Begun) return;
    try {
      link_->Commit();
    } catch (Error& error) {
      FaceFailure(error);
      Undo();
      throw;
    }
    Leave();
  }

  void RollbackWork() noexcept override {
    reads_.clear();
    if (std::exchange(unit_, Unit::None) == Unit::Begun) Undo();
  }

 private:
  // A unit that reads is one that did nothing else so far, on a server where rows that a transaction reads stay locked:
  // its statements stand by themselves, and lock nothing beyond their end. A unit is lost when what it did so far
  // is undone, by the server or since it isn't what was meant: the rest of it must not run.
  enum class Unit { None, Ready, Reads, Begun, Lost };

  // A text of more gains little, and keeps the server's answer from its time limit.
  static constexpr std::size_t kMostJoined = 200;
  static constexpr std::size_t kMostJoinedBytes = 256 * 1024;

  struct Read {
    Text text;
    Ref<RowSet> rows;
  };

  [[noreturn]] static void ThrowLost() {
    throw Error(database_error::kConnection, "ODBC",
                "The server has undone this unit of work, which runs nothing more.");
  }

  // Whether the text can run again where the connection was lost over it: nothing was done before it, and it stands in
  // a transaction that it doesn't end itself, or reads alone.
  bool NothingIsDone(const odbc::StatementTraits& traits) const {
    return traits.only_reads ? unit_ == Unit::None || unit_ == Unit::Ready
                             : unit_ == Unit::Ready && !traits.ends_transaction;
  }

  RecordsetRef Run(std::string_view text, BatchListener* listener) {
    if (unit_ == Unit::Lost) ThrowLost();
    const odbc::StatementTraits traits = odbc::TraitsOf(text);
    const bool may_run_twice = NothingIsDone(traits);
    const bool was_open = link_ != nullptr;
    Ref<RowSet> rows;
    try {
      rows = Perform(text, traits, listener);
    } catch (const Error& error) {
      if (error.number != database_error::kConnection) throw;
      // The server closed the connection while it was idle. What a transaction may have begun there is undone.
      if (!was_open || link_ || !may_run_twice) throw;
      if (unit_ == Unit::Lost) unit_ = Unit::Ready;
      rows = Perform(text, traits, listener);
    }
    return rows ? OpenRecordset(rows) : nullptr;
  }

  // So many of the texts, from the first on, may go to the server as one.
  std::size_t CountJoinable(std::span<const Text> texts) const {
    std::size_t count = 0;
    for (std::size_t bytes = 0; count < std::min(texts.size(), kMostJoined); ++count) {
      bytes += texts[count].size();
      if (bytes > kMostJoinedBytes || !odbc::IsPlainInsert(texts[count]) || !link_->MayJoin(texts[count])) break;
    }
    return count;
  }

  // A refusal undoes the unit: what the texts have left behind isn't what they would have left one by one.
  void RunJoined(std::span<const Text> inserts, std::size_t& done) {
    try {
      const std::optional<odbc::Link::Refusal> refusal = link_->RunJoined(inserts);
      if (!refusal) {
        work_stands_ = true;
        done += inserts.size();
        return;
      }
      done += refusal->at;
      std::rethrow_exception(refusal->error);
    } catch (Error& error) {
      FaceFailure(error);
      GiveUp();
      throw;
    } catch (...) {
      GiveUp();
      throw;
    }
  }

  void GiveUp() noexcept {
    if (std::exchange(unit_, Unit::Lost) == Unit::Begun) Undo();
  }

  void NeedLink() {
    if (!link_) link_ = std::make_unique<odbc::Link>(settings_);
  }

  Ref<RowSet> Perform(std::string_view text, const odbc::StatementTraits& traits, BatchListener* listener) {
    NeedLink();
    try {
      const bool reads =
          traits.only_reads && link_->LocksWhatItReads() && (unit_ == Unit::Ready || unit_ == Unit::Reads);
      if (reads) {
        unit_ = Unit::Reads;
      } else if (unit_ == Unit::Ready || unit_ == Unit::Reads) {
        Begin();
      }
      const Ref<RowSet> rows = link_->Run(text, traits, listener);
      work_stands_ = true;
      if (reads) reads_.push_back({Text(text), rows});
      if (unit_ == Unit::Begun && link_->TextEndedTransaction()) BeginAnew();
      return rows;
    } catch (Error& error) {
      if (link_) FaceFailure(error);
      if (!link_ && unit_ != Unit::None) unit_ = Unit::Lost;
      throw;
    }
  }

  void Begin() {
    unit_ = Unit::Begun;
    try {
      link_->BeginTransaction();
    } catch (Error& error) {
      error.number = database_error::kConnection;
      Lose();
      throw;
    }
    try {
      ReadAgain();
    } catch (const Error&) {
      Undo();
      unit_ = Unit::Lost;
      throw;
    }
  }

  // What the unit read before it began to write is read again, and stays as it is from here on: a write that rests on a
  // check must not stand where the check wouldn't hold any more.
  void ReadAgain() {
    for (const Read& read : std::exchange(reads_, {})) {
      if (SameRows(link_->Run(read.text, {}), read.rows)) continue;
      throw odbc::ServerError(
          database_error::kConnection,
          "What this unit of work had read was changed before it began to write.\n" + Text(odbc::kMayTryAgain),
          odbc::ServerError::Effect::UnitUndone);
    }
  }

  // Finds out what a failure means to the unit, and numbers it as a lost connection where it is one.
  void FaceFailure(Error& error) {
    using Effect = odbc::ServerError::Effect;
    const auto* const of_server = dynamic_cast<const odbc::ServerError*>(&error);
    const Effect effect = of_server != nullptr ? of_server->effect : Effect::StatementRefused;
    const bool dead = effect != Effect::UnitUndone && link_->IsDead();
    if (dead && error.number != database_error::kTimeout) error.number = database_error::kConnection;
    if (dead || effect == Effect::ConnectionLost) {
      Lose();
    } else if (unit_ == Unit::Begun && (effect == Effect::UnitUndone || link_->TransactionIsGone())) {
      // Some errors make a server undo the whole transaction. Where it held nothing yet, a new one may follow.
      link_->TransactionIsGone() ? Leave() : Undo();
      unit_ = work_stands_ ? Unit::Lost : Unit::Ready;
    }
  }

  // The server's transaction has ended: the next statement begins one.
  void BeginAnew() {
    Leave();
    unit_ = Unit::Ready;
    work_stands_ = false;
  }

  void Lose() {
    link_ = nullptr;
    if (unit_ == Unit::Begun || unit_ == Unit::Reads) unit_ = Unit::Lost;
  }

  void Undo() noexcept {
    if (!link_) return;
    try {
      link_->Rollback();
    } catch (...) {
      link_ = nullptr;
    }
    Leave();
  }

  // The work is done already: a connection that doesn't come out of its transaction is only given up.
  void Leave() noexcept {
    try {
      if (link_) link_->LeaveTransactions();
    } catch (...) {
      link_ = nullptr;
    }
  }

  odbc::Settings settings_;
  std::unique_ptr<odbc::Link> link_;  // null where the connection was lost
  Unit unit_ = Unit::None;
  bool work_stands_ = false;  // a statement of the unit has succeeded
  std::vector<Read> reads_;   // of a unit that reads
};

}  // namespace

ConnectionRef OpenOdbc(const Text& connection_text) {
  return New<OdbcConnection>(connection_text);
}

Text ManagerVersion() {
  const odbc::Environment environment = odbc::OpenEnvironment();
  const odbc::Session session(environment.get());
  char version[64] = "";
  SQLSMALLINT size = 0;
  if (!SQL_SUCCEEDED(SQLGetInfo(session.get(), SQL_DM_VER, version, sizeof version, &size)))
    return "ODBC driver manager";
  return Text("ODBC driver manager ") + version;
}

}  // namespace rebate

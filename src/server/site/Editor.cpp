// SPDX-License-Identifier: Apache-2.0
#include "server/site/Editor.h"

#include <SQLiteCpp/Exception.h>

#include <cstdio>
#include <new>
#include <stdexcept>

namespace server {

Editor::Editor(Database& database, const LogLimits& limits, Accounts::Clock clock, const Catalog& catalog)
    : m_database(database),
      m_accounts(database, std::move(clock)),
      m_resources(database),
      m_tables(database),
      m_log(database, limits),
      m_catalog(catalog) {}

bool Editor::Begin() {
  m_steps.clear();
  m_changes.clear();
  m_closedSessions.clear();
  m_begin = Here();
  try {
    m_transaction.emplace(m_database);
    return true;
  } catch (const SQLite::Exception& e) {
    if (!IsBusy(e)) throw;
    return false;
  }
}

std::optional<Refusal> Editor::Try(const std::function<void(Editor&)>& edit) {
  const Mark mark = Here();
  Savepoint savepoint(m_database);
  std::optional<Refusal> refusal;
  try {
    edit(*this);
    savepoint.Keep();
    return std::nullopt;
  } catch (const Refusal& reason) {
    refusal = reason;
  } catch (const std::bad_alloc&) {
    refusal = Refusal::NoMemory();
  } catch (const std::exception& e) {
    std::fprintf(stderr, "viewserver: an edit fails: %s\n", e.what());
    refusal = Refusal::InternalError();
  }
  BackTo(mark);
  if (!savepoint.Undo()) throw std::runtime_error("the store could not undo an edit");
  return refusal;
}

void Editor::Commit() {
  m_transaction->Commit();
  m_transaction.reset();
}

void Editor::GiveUp() noexcept {
  m_transaction.reset();
  BackTo(m_begin);
}

void Editor::BackTo(const Mark& mark) noexcept {
  while (m_steps.size() > mark.steps) {
    WithMemory([this] { Revert(m_catalog, m_steps.back()); });
    m_steps.pop_back();
  }
  while (m_changes.size() > mark.steps) m_changes.pop_back();
  m_closedSessions.resize(mark.closedSessions);
  m_log.Reset(mark.log);
}

int64_t Editor::Write(const Caller& caller, std::vector<Step> steps) {
  for (Step& step : steps) Write(caller, std::move(step));
  return m_log.Range().last;
}

int64_t Editor::Write(const Caller& caller, Step step) {
  const int64_t number = m_log.Range().last + 1;
  Save(step, number);
  Change change = ChangeOf(step, number, caller, m_accounts);
  m_log.Append(change);
  m_changes.push_back(std::move(change));
  m_steps.push_back(std::move(step));
  WithMemory([&] { ApplyTo(m_catalog, m_steps.back()); });  // for what has been applied in part cannot be reverted
  return number;
}

void Editor::Save(Step& step, int64_t number) {
  if (step.newView) {
    step.newView->changeNumber = number;
    m_tables.Save(*step.newView);
  } else if (step.oldView) {
    m_tables.DeleteView(*step.oldView);
  } else if (step.newGroup) {
    step.newGroup->changeNumber = number;
    m_tables.Save(*step.newGroup);
  } else {
    m_tables.DeleteGroup(step.oldGroup->id);
  }
}

}  // namespace server

#pragma once

// Every place where a caller's text reaches SQL, as one table for the
// injection replay (InjectionLiveTest.cpp): each entry runs one operation
// with the text in one position.
//
// Positions come in groups, one per provider or family of providers. A
// provider joins the replay with a file of its own,
// tests/live/Injection<Provider>.cpp, that registers its group:
//
//   void AddPositions(std::vector<InjectionPosition>& all) {
//     Adds<IFooDP>(all, 42, "IFooDP", &FooFields, {1, 3});        // Add(fields)
//     Updates<IFooDP>(all, 42, "IFooDP", &FooFields, {1, 3}, key); // Update(id, fields)
//     // or both at once: AddsAndUpdates<IFooDP>(all, 42, "IFooDP", &FooFields, {1, 3}, key)
//     Argument<IFooDP>(all, 42, "IFooDP::Find name",               // a text argument
//                      [](auto& p, const auto& t, const auto& text) { p.Find(text); });
//   }
//   const bool kRegistered = RegisterInjectionGroup({"foo", &AddPositions, &Prepare});
//
// Each listed field-array position becomes one entry of the table. Rows the
// positions need beyond the shared ones of InjectionTargets are created by the
// group's prepare function and kept in InjectionTargets::more under names of
// the group's choosing.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvmysql/DataHandler.h"
#include "orvmysql/Variant.h"

namespace orvtest {

// The handler under test and the rows that Update positions write to and
// name checks compare against.
struct InjectionTargets {
  std::shared_ptr<orvmysql::CMYSqlDP> handler;
  int32_t definition = 1;
  int32_t activity = 1;
  std::string activity_identifier = "step";
  int32_t transition = 1;
  int32_t switch_row = 1;
  int32_t process_param = 1;
  int32_t property = 1;
  int32_t parameter = 1;
  int32_t split = 1;
  int32_t message = 1;
  int32_t outgoing = 1;  // sent again and again, with one recipient
  int32_t attachment = 1;
  int32_t process = 1;
  int32_t activity_instance = 1;
  int32_t workitem = 1;
  std::map<std::string, int32_t> more;  // rows of the groups' own prepare steps
};

struct InjectionPosition {
  std::string name;  // operation and position, for the report
  // Runs the operation with the text in the position; a plain text must run
  // without error.
  std::function<void(const InjectionTargets&, const std::string& text)> run;
  // The text travels inside an XML document, which cannot carry NUL.
  bool document = false;
};

struct InjectionGroup {
  std::string name;  // groups are replayed in the order of their names
  void (*add)(std::vector<InjectionPosition>& all);
  // Creates the group's own rows once the shared ones exist; may be null.
  void (*prepare)(InjectionTargets& targets) = nullptr;
};

// Called from a namespace-scope initialiser of the group's file.
bool RegisterInjectionGroup(InjectionGroup group);

// The positions of every registered group.
const std::vector<InjectionPosition>& InjectionPositions();

// Creates the rows the positions refer to through the handler's providers:
// the shared ones, then each group's.
InjectionTargets PrepareInjectionTargets(std::shared_ptr<orvmysql::CMYSqlDP> handler);

// --- For the groups ----------------------------------------------------------

// The handler's provider of that data-source code, as its interface.
template <class T>
std::shared_ptr<T> Source(const InjectionTargets& t, int32_t code) {
  auto typed = std::dynamic_pointer_cast<T>(t.handler->GetDataSource(code));
  if (!typed) throw std::runtime_error("provider lacks the requested interface");
  return typed;
}

// A complete field array that the operation accepts.
using Base = orvmysql::FieldArray (*)(const InjectionTargets&);
using Positions = std::vector<std::size_t>;

// One entry per position: the base array with the text there, passed to call.
template <class T, class Call>
void InArray(std::vector<InjectionPosition>& all, int32_t code, const std::string& operation,
             Base base, const Positions& positions, Call call) {
  for (std::size_t pos : positions) {
    all.push_back({operation + " [" + std::to_string(pos) + "]",
                   [=](const InjectionTargets& t, const std::string& text) {
                     orvmysql::FieldArray fields = base(t);
                     fields.at(pos) = text;
                     call(*Source<T>(t, code), t, fields);
                   }});
  }
}

// Add(fields), and Update(key of the target row, fields), of the provider.
template <class T>
void Adds(std::vector<InjectionPosition>& all, int32_t code, const std::string& provider, Base base,
          const Positions& positions) {
  InArray<T>(all, code, provider + "::Add", base, positions,
             [](T& p, const InjectionTargets&, const orvmysql::FieldArray& f) { p.Add(f); });
}
template <class T>
void Updates(std::vector<InjectionPosition>& all, int32_t code, const std::string& provider,
             Base base, const Positions& positions, int32_t InjectionTargets::*key) {
  InArray<T>(all, code, provider + "::Update", base, positions,
             [key](T& p, const InjectionTargets& t, const orvmysql::FieldArray& f) {
               p.Update(t.*key, f);
             });
}

// Both, with the same positions.
template <class T>
void AddsAndUpdates(std::vector<InjectionPosition>& all, int32_t code, const std::string& provider,
                    Base base, const Positions& positions, int32_t InjectionTargets::*key) {
  Adds<T>(all, code, provider, base, positions);
  Updates<T>(all, code, provider, base, positions, key);
}

// A text argument of an operation other than a field array.
template <class T>
void Argument(std::vector<InjectionPosition>& all, int32_t code, const std::string& name,
              void (*call)(T& p, const InjectionTargets& t, const std::string& text)) {
  all.push_back({name, [=](const InjectionTargets& t, const std::string& text) {
                   call(*Source<T>(t, code), t, text);
                 }});
}

// A list operation that takes a filter document.
using List = void (*)(const InjectionTargets& t, const std::string& filter);

// Four entries for a text attribute of a list's filter: equal and contains,
// in a query built in code and in a document written by hand.
void Filter(std::vector<InjectionPosition>& all, const std::string& name, List list,
            const std::string& attribute);

}  // namespace orvtest

#include "access/ErrorHandling.h"

#include <atomic>
#include <new>
#include <string>

#include "access/Version.h"
#include "l10n/Languages.h"

namespace orvmysql::detail {

namespace {

thread_local LineFrame* g_top_frame = nullptr;

std::atomic<std::string (*)(int32_t)> g_message_lookup = nullptr;

// The library's own message table. Texts stand exactly as the engine shows them.
constexpr Message kMessages[] = {
    {8192, "Read only object cannot be modified."},
    {8193, "Property is readonly"},
    {8194, "Unknown attribute '%0'."},
    {8195, "Operator '%0' is not a valid operator for the attribute '%1'."},
    {8196, "Error while generating primary key."},
    {8197, "Cannot add a already existing category"},
    {8198, "Category with the name '%0' already exist"},
    {8199, "Cannot delete category linked to a activity"},
    {8200, "Category name cannot be blank"},
    {8201, "Cannot add a already existing template"},
    {8202, "Template name is not provided"},
    {8203, "Template with the name '%0' already exist"},
    {8204, "Class id is not provided"},
    {8205, "Cannot delete template linked to a workflow defination"},
    {8206, "Type mismatch : value is of type '%0' expected '%1'"},
    {8207, "Lookup type notset."},
    {8208, "Workflow with the name '%0' already exist"},
    {8209, "Workflow name is not provided"},
    {8210, "Workflow author is not provided"},
    {8211, "Workflow definition '%0' does not exist."},
    {8212, "Cannot delete a workflow '%0' as it is already in use."},
    {8213, "Switch type is notset."},
    {8214, "Source node notset."},
    {8215, "Target node notset."},
    {8216, "Transition arc does not exist."},
    {8217, "Switch does not exist."},
    {8218, "Activity does not exist."},
    {8219, "Task name is not provided"},
    {8220, "Task with the name '%0' already exist"},
    {8221, "A required property '%0' is not set in activity '%1'."},
    {8222, "'%0' cannot be greater than '%1' in activity '%2'."},
    {8223, "'%0' cannot be less than '%1' in activity '%2'."},
    {8224, "Registered keyword '%0' cannot be used as activity name."},
    {8225, "Task name contains invalid characters"},
    {8226, "Activity not linked to workflow definition."},
    {8227, "Save the workflow definition to publish."},
    {8228, "Cannot publish a workflow which has no task defined."},
    {8229, "No %0 are assigned to activity '%1'."},
    {8230, "cannot compare a '%0' variable '%1' to a '%2'."},
    {8231, "Task name '%0' does not exist."},
    {8232, "Parameter '%0' does not exist exist in task '%1'."},
    {8233, "Parameter of type '%0' cannot be used in condition."},
    {8234, "Syntax error in condition '...%0...'"},
    {8235, "Invalid date format '%0'."},
    {8236, "Service '%0' does not exist."},
    {8237, "Workflow service is already running."},
    {8238, "Cannot process a paused workitem."},
    {8239, "Cannot process a paused activity."},
    {8240, "Cannot process a paused process."},
    {8241, "Parameter '%0' does not exist."},
    {8242, "Workflow definition does not exist or is not published."},
    {8243, "Process initiator notset."},
    {8244, "Required parameter '%0' notset."},
    {8245, "Process context notset."},
    {8246, "Invalid change of state error"},
    {8247, "Process is already registered."},
    {8248, "Invalid action under current context."},
    {8249, "Incorrect or insufficient data provided."},
    {8250, "Message must have a sender."},
    {8251, "Message must have at least one receipent."},
    {8252, "Invalid number."},
    {12288, "Cannot set enviornment variable when workflow service is running."},
    {40960, "Yes"},
    {40961, "No"},
    {61440, "Connection object is not set or is null"},
    {61441, "Failed to connect to data provider. (Reason: %0)"},
    {61442, "Connection is in use by another thread; use one data handler per thread."},
};

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
  if (from.empty()) return;
  for (std::size_t pos = text.find(from); pos != std::string::npos;
       pos = text.find(from, pos + to.size())) {
    text.replace(pos, from.size(), to);
  }
}

}  // namespace

LineFrame::LineFrame(int line) : line_(line), previous_(g_top_frame) {
  g_top_frame = this;
}

LineFrame::~LineFrame() {
  g_top_frame = previous_;
}

void MarkLine(int line) {
  if (g_top_frame != nullptr) g_top_frame->line_ = line;
}

Error CurrentError() {
  try {
    throw;
  } catch (const Error& e) {
    return e;
  } catch (const std::bad_alloc&) {
    return Error(kErrOutOfMemory, "orvmysql", std::string(RuntimeErrorText(kErrOutOfMemory)));
  } catch (const std::exception& e) {
    return Error(kErrInternal, "orvmysql",
                 std::string(RuntimeErrorText(kErrInternal)) + ": " + e.what());
  } catch (...) {
    return Error(kErrInternal, "orvmysql", std::string(RuntimeErrorText(kErrInternal)));
  }
}

void Reraise(const Handler& handler, int line) {
  Error error = CurrentError();
  std::string location(handler.location);
  location += std::to_string(line);
  if (!handler.location.empty() && handler.location.back() == '(') location += ')';
  error.AppendLocation(location);
  if (handler.connection_on_91 && error.Number() == kErrObjectNotSet) {
    error.SetDescription(error.Description() + " (Connection)");
  }
  if (handler.statement != nullptr) {
    error.SetDescription(*handler.statement + "\r\n" + error.Description());
  }
  throw error;
}

std::span<const Message> BuiltInMessages() {
  return kMessages;
}

std::string BuiltInMessage(int32_t number) {
  for (const Message& m : kMessages) {
    if (m.number == number) return m.text;
  }
  ThrowRuntimeError(kErrResourceNotFound, std::to_string(number));
}

std::string HostMessage(int32_t number) {
  auto* lookup = g_message_lookup.load();
  return lookup != nullptr ? lookup(number) : std::string();
}

std::string LoadMessage(int32_t number) {
  std::string text = HostMessage(number);
  if (text.empty()) text = CatalogMessage(number);
  return text.empty() ? BuiltInMessage(number) : text;
}

void SetMessageLookup(std::string (*lookup)(int32_t number)) {
  g_message_lookup = lookup;
}

void RaiseError(int32_t number, std::string_view /*location*/,
                std::initializer_list<Variant> params) {
  std::string message = LoadMessage(number);
  int index = 0;
  for (const Variant& p : params) {
    ReplaceAll(message, "%" + std::to_string(index++), p.ToText());
  }
  std::string source =
      "pelOrv=> [Err:" + std::to_string(number) + "][Ver:" ORVMYSQL_VERSION_STRING "]";
  throw Error(static_cast<int32_t>(static_cast<uint32_t>(number) | 0x80040000u), std::move(source),
              std::move(message));
}

}  // namespace orvmysql::detail

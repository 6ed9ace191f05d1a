#pragma once

// Engine interfaces of the definition providers: process definitions, their
// activities, process parameters, the property and parameter bags of the
// activities, and the graph of switches and transitions between them.
//
// Obtain a provider from the data handler and cast it to its interface:
//   auto defs = std::dynamic_pointer_cast<IOrvDefinitionsDP>(handler.GetDataSource(4));
//
// Common rules:
// - Add and Update take the entity's values as a FieldArray read by fixed
//   position (the tables below). Every position is read and converted before
//   any statement runs: a short array raises error 9, a value that is not a
//   number in a numeric position raises 13, Null in a text position that takes
//   no NULL raises 94, a text that is not valid UTF-8 raises 5 (see below),
//   and nothing is written.
// - Every text (field-array positions, names, identifiers) must be valid
//   UTF-8: no stray continuation bytes, no sequences cut short, no overlong
//   forms, no surrogates, nothing beyond U+10FFFF. Anything else raises 5,
//   "Invalid procedure call or argument: text is not valid UTF-8 at byte N:
//   ...", N the position of the first bad byte counted from 1, before any
//   session, key or statement.
// - "quoted" columns are written as a quoted, escaped SQL text; "quoted 255"
//   cuts the text to 255 characters first. "NULL when empty" columns store NULL
//   for Null or an empty text. Doubles are written with a decimal point
//   whatever the locale.
// - Load appends the caller's tail (a WHERE and/or ORDER BY clause, after one
//   blank) to the provider's select list. The tail is raw SQL: it must come
//   from trusted code, never from an end user.
// - Reading operations return the rows of one table with the columns named in
//   the select list of each provider; no order is imposed unless stated.
// - Failures are raised as orvmysql::Error. The two cascading deletes are all
//   or nothing (one transaction each, see IConnection); elsewhere each
//   statement commits by itself.

#include <cstdint>
#include <memory>
#include <string>

#include "orvmysql/List.h"
#include "orvmysql/Object.h"
#include "orvmysql/Variant.h"

namespace orvmysql {

// Process definitions, tblProcessDef (data-source code 4, COrvDefinitionsDP).
// A definition whose State is 2 is published.
//
// Field array of Add and Update (24 positions):
//
// | Pos | Column                 | Written as                |
// |-----|------------------------|---------------------------|
// | 0   | ProcDefName            | quoted 255                |
// | 1   | ProcdefDescription     | quoted, NULL when empty   |
// | 2   | AccessLevel            | integer                   |
// | 3   | CreatedDate            | date and time (NULL when Empty or Null) |
// | 4   | ModifiedDate           | date and time (NULL when Empty or Null) |
// | 5   | CreatorName            | quoted 255, NULL when empty |
// | 6   | ProcModifiedByUserName | quoted 255, NULL when empty |
// | 7   | CreatorID              | quoted 255                |
// | 8   | CreatorType            | quoted 255, NULL when empty |
// | 9   | ProcModifiedByUserID   | quoted 255, NULL when empty |
// | 10  | ProcModifiedByUserType | quoted 255, NULL when empty |
// | 11  | Duration               | integer                   |
// | 12  | DurationUnit           | integer                   |
// | 13  | Priority               | integer                   |
// | 14  | ExcludeNonWorkingHours | boolean, 1 or 0           |
// | 15  | AclId                  | integer                   |
// | 16  | MajorVersion           | integer                   |
// | 17  | MinorVersion           | integer                   |
// | 18  | State                  | integer                   |
// | 19  | Timeout                | integer                   |
// | 20  | TimeoutUnit            | integer                   |
// | 21  | ProcDefTypeMask        | integer                   |
// | 22  | Layout                 | quoted, NULL when empty   |
// | 23  | Trigger                | quoted, NULL when empty   |
//
// The name and the author's identifier are always written as texts; the
// description, the layout, the trigger and everything about the last modifier
// (who may not exist yet) are optional and store NULL when empty.
class ORVMYSQL_EXPORT IOrvDefinitionsDP : public virtual IObject {
 public:
  // Deletes the definition and everything that hangs on it: the parameter and
  // property bags of its activities, its activities, transitions, switches and
  // process parameters, then the definition row, as one transaction. Always
  // true. Process instances are not checked (see IsOrvdefinitionInUse).
  virtual bool Delete(int32_t definition_id) = 0;
  // True when a process instance refers to the definition.
  virtual bool IsOrvdefinitionInUse(int32_t definition_id) = 0;
  // True when the definition exists with State 2.
  virtual bool IsWorkflowPublished(int32_t definition_id) = 0;
  // Every definition matching the caller's trusted SQL tail ("" gives all).
  virtual std::shared_ptr<IListIterator> Load(const std::string& filter) = 0;
  virtual std::shared_ptr<IListIterator> GetProcessDefByID(int32_t definition_id) = 0;
  // True when another definition (ProcessDefID other than definition_id) has
  // this name. The name is matched literally (LIKE wildcards in it are
  // escaped), with the database collation's case rules.
  virtual bool WorkflowDefinitionExist(const std::string& name, int32_t definition_id) = 0;
  // Writes every position of the array to the row; true when the row exists.
  virtual bool Update(int32_t definition_id, const FieldArray& fields) = 0;
  // Inserts a new definition with a new key (LastActivityID, LastSwitchID and
  // LastTransitionID start at 0). Always true; find the new row through Load.
  virtual bool Add(const FieldArray& fields) = 0;
};

// Activities of a definition, tblActivities (data-source code 7, CActivitiesDP).
// An activity has a numeric key ActivityID and a text identifier
// ActivityProcDefID that is unique within its definition.
//
// Field array of Add and Update (16 positions):
//
// | Pos | Column             | Written as              | Update writes it |
// |-----|--------------------|-------------------------|------------------|
// | 0   | ActivityName       | quoted 255              | yes              |
// | 1   | Description        | quoted, NULL when empty | yes              |
// | 2   | ActivityType       | integer                 | no               |
// | 3   | StartTime          | integer                 | yes              |
// | 4   | StartTimeUnit      | integer                 | yes              |
// | 5   | Duration           | integer                 | yes              |
// | 6   | DurationUnit       | integer                 | yes              |
// | 7   | Timeout            | integer                 | yes              |
// | 8   | TimeoutUnit        | integer                 | yes              |
// | 9   | FKProcDefinitionID | integer                 | no               |
// | 10  | Priority           | integer                 | yes              |
// | 11  | Subject            | quoted 255, NULL when empty | yes          |
// | 12  | Message            | quoted, NULL when empty | yes              |
// | 13  | ActivityProcDefID  | quoted 255              | no               |
// | 14  | ActivityTypeMask   | integer                 | no               |
// | 15  | ClassID            | quoted 255              | no               |
//
// Update still reads and checks all 16 positions.
class ORVMYSQL_EXPORT IActivitiesDP : public virtual IObject {
 public:
  // Deletes the activity's parameter bag, its property bag, then the activity,
  // as one transaction. Transitions that point at it are left alone. The first argument is not
  // used. The activity ID is given as text and must be a number (error 13
  // otherwise, before anything is deleted). Always true.
  virtual bool Delete(int32_t definition_id, const std::string& activity_id) = 0;
  virtual std::shared_ptr<IListIterator> GetActivitiesForProcess(int32_t definition_id) = 0;
  virtual std::shared_ptr<IListIterator> GetActivityByID(int32_t activity_id) = 0;
  // Activities matching the caller's trusted SQL tail.
  virtual std::shared_ptr<IListIterator> Load(const std::string& filter) = 0;
  // True when another activity of the definition (ActivityID other than
  // activity_id) has this name; the name is matched literally.
  virtual bool ActivityExist(const std::string& name, int32_t definition_id,
                             int32_t activity_id) = 0;
  // Inserts a new activity with a new key. Always true; find the new row
  // through GetActivitiesForProcess.
  virtual bool Add(const FieldArray& fields) = 0;
  // Updates the activity of the definition whose ActivityProcDefID matches the
  // identifier by LIKE (so "%" and "_" in it are wildcards). True when a row
  // matched.
  virtual bool Update(int32_t definition_id, const std::string& activity_identifier,
                      const FieldArray& fields) = 0;
};

// Rows of a definition's graph: transitions and switches. Each row has a key
// from GetNextID and belongs to one definition.
class ORVMYSQL_EXPORT IGraphRowsDP : public virtual IObject {
 public:
  // Inserts a row; returns its new key, or -1 when no row was inserted.
  virtual int32_t Add(const FieldArray& fields) = 0;
  // Writes every position to the row; true when the row exists.
  virtual bool Update(int32_t id, const FieldArray& fields) = 0;
  // With definition_id < 1, deletes the one row; otherwise every row of that
  // definition (id is then ignored). Always true.
  virtual bool Delete(int32_t id, int32_t definition_id) = 0;
  virtual std::shared_ptr<IListIterator> GetByID(int32_t id) = 0;
  // The rows of a definition.
  virtual std::shared_ptr<IListIterator> GetForProcess(int32_t definition_id) = 0;
  // Rows matching the caller's trusted SQL tail.
  virtual std::shared_ptr<IListIterator> Load(const std::string& filter) = 0;
};

// Transitions of a definition's graph, tblTransitions (data-source code 5,
// CTransitionsDP), keyed by TransitionID. A transition leads from one node to
// another; a node is an activity or a switch, told apart by the node type
// (for a switch, its SwitchType).
//
// Field array of Add and Update (7 positions):
//
// | Pos | Column              | Written as              |
// |-----|---------------------|-------------------------|
// | 0   | FKFromNodeID        | integer                 |
// | 1   | FromNodeType        | integer                 |
// | 2   | FKToNodeID          | integer                 |
// | 3   | ToNodeType          | integer                 |
// | 4   | TransitionCondition | quoted, NULL when empty |
// | 5   | FKProcDefinitionID  | integer                 |
// | 6   | TransitionProcDefID | quoted 255              |
class ORVMYSQL_EXPORT ITransitionsDP : public virtual IGraphRowsDP {};

// Switches of a definition's graph, tblSwitches (data-source code 6,
// CSwitchesDP), keyed by SwitchID. The definition's start node is its switch
// with SwitchType 2.
//
// Field array of Add and Update (4 positions):
//
// | Pos | Column             | Written as                  |
// |-----|--------------------|-----------------------------|
// | 0   | SwitchType         | integer                     |
// | 1   | DisplayName        | quoted 255, NULL when empty |
// | 2   | FKProcDefinitionID | integer                     |
// | 3   | SwitchProcDefID    | quoted 255                  |
class ORVMYSQL_EXPORT ISwitchesDP : public virtual IGraphRowsDP {};

// Parameter declarations of a definition, tblProcessParams (data-source code
// 24, CProcessParamsDP).
//
// Field array of Add and Update (14 positions):
//
// | Pos | Column             | Written as                                         |
// |-----|--------------------|----------------------------------------------------|
// | 0   | FKProcDefID        | integer                                            |
// | 1   | ParameterName      | quoted 255 (empty gives an empty text)             |
// | 2   | DisplayName        | quoted 255; when empty, the parameter name instead |
// | 3   | DataType           | integer                                            |
// | 4   | DefaultValue       | quoted 255, NULL when empty                        |
// | 5   | Attributes         | integer                                            |
// | 6   | ParameterType      | integer                                            |
// | 7   | Min                | double                                             |
// | 8   | Max                | double                                             |
// | 9   | CreatorType        | integer                                            |
// | 10  | ExtendedAttributes | quoted, NULL when empty                            |
// | 11  | Relevance          | quoted 255, NULL when empty                        |
// | 12  | LookupTypeCode     | quoted 255, NULL when empty                        |
// | 13  | ListAttribute      | quoted 255, NULL when empty                        |
class ORVMYSQL_EXPORT IProcessParamsDP : public virtual IObject {
 public:
  virtual std::shared_ptr<IListIterator> GetParameterByID(int32_t parameter_id) = 0;
  virtual std::shared_ptr<IListIterator> GetParameterForProcess(int32_t definition_id) = 0;
  // Parameters matching the caller's trusted SQL tail.
  virtual std::shared_ptr<IListIterator> Load(const std::string& condition) = 0;
  // True when the definition has a parameter of this name (matched literally,
  // with the collation's case rules).
  virtual bool ParameterExist(const std::string& name, int32_t definition_id) = 0;
  // Writes every position to the row. True, whether or not the row exists.
  virtual bool Update(int32_t parameter_id, const FieldArray& fields) = 0;
  // Inserts a parameter; returns its new ParameterID, or -1 when no row was
  // inserted.
  virtual int32_t Add(const FieldArray& fields) = 0;
  // Deletes the one parameter; instance data that refers to it stays. True.
  virtual bool Delete(int32_t parameter_id) = 0;
};

// Property bag of an activity, tblActivityPropertyBag (data-source code 23,
// CActivityPropertyBagDP).
//
// Field array of Add and Update (15 positions):
//
// | Pos | Column              | Written as                  |
// |-----|---------------------|-----------------------------|
// | 0   | FKActivityID        | integer                     |
// | 1   | PropertyName        | quoted 255                  |
// | 2   | DisplayName         | quoted 255 (empty stays an empty text) |
// | 3   | PropertyDescription | quoted 255                  |
// | 4   | DataType            | integer                     |
// | 5   | Value               | quoted, NULL when empty     |
// | 6   | Attributes          | integer                     |
// | 7   | Min                 | double                      |
// | 8   | Max                 | double                      |
// | 9   | ExtendedAttributes  | quoted, NULL when empty     |
// | 10  | Mapping             | quoted 255, NULL when empty |
// | 11  | relevance           | quoted 255, NULL when empty |
// | 12  | LookupTypeCode      | quoted 255, NULL when empty |
// | 13  | ListAttribute       | quoted 255, NULL when empty |
// | 14  | CreatorType         | integer                     |
class ORVMYSQL_EXPORT IPropertyValueDP : public virtual IObject {
 public:
  virtual std::shared_ptr<IListIterator> GetPropertiesForEntity(int32_t activity_id) = 0;
  virtual std::shared_ptr<IListIterator> GetPropertyByID(int32_t property_id) = 0;
  // Properties matching the caller's trusted SQL tail.
  virtual std::shared_ptr<IListIterator> Load(const std::string& condition) = 0;
  // Inserts a property; returns its new ActivityPropertyID, or -1 when no row
  // was inserted.
  virtual int32_t Add(const FieldArray& fields) = 0;
  // Writes every position to the row. True, whether or not the row exists.
  virtual bool Update(int32_t property_id, const FieldArray& fields) = 0;
  // With activity_id < 1, deletes the one property; otherwise the whole bag of
  // that activity (property_id is then ignored). True.
  virtual bool Delete(int32_t property_id, int32_t activity_id) = 0;
};

// Named, typed values recorded against an entity. Several providers implement
// it over their own tables, each with its own field arrays and entity; each
// documents them with its class. Common meaning:
// - Add returns the provider's result for the new row (see the provider).
// - Update writes the row with the given key; Delete removes the row with the
//   key, or, when entity_id is 1 or more, every row of that entity.
//
// Activity parameter bag, tblActivityParamBag (data-source code 20,
// CActivityParamBagDP); the entity is the activity. Add returns the new
// ActivityParameterID as a 32-bit integer, or -1 when no row was inserted.
// Update is always true. Add and Update use two different layouts; both need
// 15 positions:
//
// | Pos | Add                                 | Update                           |
// |-----|-------------------------------------|----------------------------------|
// | 0   | FKActivityID, integer               | FKActivityID, integer            |
// | 1   | ParameterName, quoted 255           | ParameterName, quoted 255        |
// | 2   | DisplayName, quoted 255, NULL when empty | Value, quoted, NULL when empty |
// | 3   | Value, quoted, NULL when empty      | DataType, integer                |
// | 4   | DataType, integer                   | Attributes, integer              |
// | 5   | Attributes, integer                 | Min, double                      |
// | 6   | Min, double                         | Max, double                      |
// | 7   | Max, double                         | ParameterType, integer           |
// | 8   | ParameterType, integer              | ExtendedAttributes, quoted, NULL when empty |
// | 9   | ExtendedAttributes, quoted, NULL when empty | Mapping, quoted 255, NULL when empty |
// | 10  | Mapping, quoted 255, NULL when empty | Relevance, quoted 255, NULL when empty |
// | 11  | Relevance, quoted 255, NULL when empty | LookupTypeCode, quoted 255, NULL when empty |
// | 12  | LookupTypeCode, quoted 255, NULL when empty | ListAttribute, quoted 255, NULL when empty
// | | 13  | ListAttribute, quoted 255, NULL when empty | not used                  | | 14  |
// CreatorType, integer                | not used                         |
//
// So the display name and the creator type of a parameter never change
// after Add.
class ORVMYSQL_EXPORT IParameterValueDP : public virtual IObject {
 public:
  virtual std::shared_ptr<IListIterator> GetParameterForEntity(int32_t entity_id) = 0;
  virtual std::shared_ptr<IListIterator> GetParameterByID(int32_t parameter_id) = 0;
  // Rows matching the caller's trusted SQL tail.
  virtual std::shared_ptr<IListIterator> Load(const std::string& condition) = 0;
  virtual Variant Add(const FieldArray& fields) = 0;
  virtual bool Update(int32_t parameter_id, const FieldArray& fields) = 0;
  virtual bool Delete(int32_t parameter_id, int32_t entity_id) = 0;
};

}  // namespace orvmysql

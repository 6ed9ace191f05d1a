#pragma once

// Engine interfaces of the instance data: the values a process instance holds
// for the parameters its definition declares, the values a task (an activity
// instance and one task index, the TaskIndex of its work item) holds for the
// parameters of its activity, the property values of an activity instance,
// and the case-relevant data recorded against activity instances.
//
// Obtain a provider from the data handler and cast it to its interface:
//   auto values = std::dynamic_pointer_cast<IProcInstanceParamsDP>(
//       handler.GetDataSource(kDsProcInstData));
//
// Common rules:
// - Add and Update take the row's values as a FieldArray read by fixed
//   position (the tables below). Every position is read and converted before
//   any session or statement: a short array raises error 9, a value that is
//   not a number in a numeric position raises 13, Null in a text position
//   that takes no NULL raises 94; nothing is written and no key is used up.
// - "quoted 255" columns are written as a quoted, escaped SQL text cut to 255
//   characters; "quoted" texts are not cut. "NULL when empty" columns store
//   NULL for Null or an empty text. Doubles are written with a decimal point
//   whatever the locale.
// - The value rule: one position ("the value") feeds two columns, TextValue
//   and NumericValue, by the data type of the row. The value is trimmed of
//   blanks; blanks only, or Null, store NULL in both. Data types 1, 6, 7 and 8
//   (the text-like ones) store the trimmed text in TextValue (quoted, not
//   cut) and NULL in NumericValue. Every other data type stores NULL in
//   TextValue and the number in NumericValue: a text is read as the program's
//   LC_NUMERIC locale writes numbers, and a point is read as a decimal point
//   in any locale ("12,5" is 12.5 under a decimal-comma locale; under "C" it
//   is not a number and raises 13, writing nothing).
// - Template joins: the reading operations of the parameter and property
//   values return one row per declaration (of the definition, or of the
//   activity's bag), the declaration's columns first and the instance's value
//   columns after them, NULL where the instance holds no value. The
//   declaration's own Attributes come back as TemplateAttributes, so that
//   Attributes is always the instance's.
// - Load appends the caller's tail (a WHERE and/or ORDER BY clause, after one
//   blank) to the provider's select list. The tail is raw SQL: it must be the
//   engine's own text, never an end user's.
// - Failures are raised as orvmysql::Error with the operation's location at
//   the end of Source(). An operation that opened a session (Add) ends that
//   session when it fails; it never ends a session the caller opened.
//   Statements that ran before a failure stay applied (no transactions).
//
// Four behaviours differ on purpose from the engine's original providers (see
// "Deliberate departures" in docs/ARCHITECTURE.md): Min and Max are written
// with a decimal point in any locale; the template joins of the process
// instance values match value rows of the one instance asked for (the
// original joined values by name only and mixed up the instances of a
// definition); the case-relevant reads skip rows of entity type 0, which
// belong to a process instance rather than an activity instance; a failing
// Add ends only the session level it opened.

#include <cstdint>
#include <memory>
#include <string>

#include "orvmysql/List.h"
#include "orvmysql/Object.h"
#include "orvmysql/Variant.h"

namespace orvmysql {

// Parameter values of process instances, tblProcInstanceData (data-source
// code 22, CProcInstDataDP), keyed by ProcInstanceDataID (GetNextID with
// -22). A value row belongs to its process instance and is matched to the
// declaration of the instance's definition (tblProcessParams) by
// ParameterName.
//
// Field array of Add and Update (11 positions):
//
// | Pos | Column                  | Written as                  |
// |-----|-------------------------|-----------------------------|
// | 0   | FKProcInstanceID        | integer                     |
// | 1   | ParameterName           | quoted 255                  |
// | 2   | TextValue, NumericValue | the value (the value rule)  |
// | 3   | DataType                | integer                     |
// | 4   | Attributes              | integer                     |
// | 5   | Min                     | double                      |
// | 6   | Max                     | double                      |
// | 7   | ParameterType           | integer                     |
// | 8   | LookupTypeCode          | quoted 255, NULL when empty |
// | 9   | ListAttribute           | quoted 255, NULL when empty |
// | 10  | Relevance               | quoted 255, NULL when empty |
//
// Rows of the reads (20 columns, whichever read): ParameterID, FKProcDefID,
// ParameterName, DisplayName, DataType, DefaultValue, TemplateAttributes,
// ParameterType, Min, Max, CreatorType, ExtendedAttributes, Relevance,
// LookupTypeCode, ListAttribute (the declaration), then ProcInstanceID,
// ProcInstanceDataID, TextValue, NumericValue, Attributes (the value).
class ORVMYSQL_EXPORT IProcInstanceParamsDP : public virtual IObject {
 public:
  // Inserts a value row with a new key. Always true.
  virtual bool Add(const FieldArray& fields) = 0;
  // Writes every position to the row. Always true, whether or not it exists.
  virtual bool Update(int32_t data_id, const FieldArray& fields) = 0;
  // With process_instance_id < 1, deletes the one row; otherwise every value
  // of that instance (data_id is then ignored). Always true.
  virtual bool Delete(int32_t data_id, int32_t process_instance_id) = 0;
  // True when the instance holds a value row of this name (matched literally,
  // with the collation's case rules).
  virtual bool ParameterExist(const std::string& name, int32_t process_instance_id) = 0;
  // The one value row beside its declaration; no row when the value has no
  // declaration of its name in the instance's definition.
  virtual std::shared_ptr<IListIterator> GetParameterByID(int32_t data_id) = 0;
  // One row per declaration of the instance's definition, with the
  // instance's value or NULLs.
  virtual std::shared_ptr<IListIterator> GetParameterForProcess(int32_t process_instance_id) = 0;
  // Value rows beside their declarations, restricted by the caller's tail.
  // The tail must begin with its own WHERE; " AND " and the condition that
  // keeps each value with its own instance follow it. An empty tail lists
  // every value row that has a declaration.
  virtual std::shared_ptr<IListIterator> Load(const std::string& condition) = 0;
  // One row per declaration. With process_instance_id -1: the declarations
  // of definition_id with NULL value columns. Otherwise the instance's values
  // beside the declarations of its definition, further restricted to
  // definition_id unless that is -1. A value row of the instance without a
  // name (NULL ParameterName) is joined to every declaration.
  virtual std::shared_ptr<IListIterator> LoadProcessInstanceParams(int32_t definition_id,
                                                                   int32_t process_instance_id) = 0;
};

// Parameter values of tasks, tblActivityInstanceData (data-source code 9,
// CActivityInstanceDataDP), keyed by AIParameterID (GetNextID with -9). A
// value row belongs to an activity instance and one of its task indexes (the
// TaskIndex of the work item it was recorded for) and is matched to the
// declaration in the parameter bag of the instance's activity
// (tblActivityParamBag) by ParameterName.
//
// Field array of Add and Update (12 positions; 0 to 10 are those of
// IProcInstanceParamsDP with the activity instance in position 0):
//
// | Pos | Column                  | Written as                  |
// |-----|-------------------------|-----------------------------|
// | 0   | FKActivityInstanceID    | integer                     |
// | 1   | ParameterName           | quoted 255                  |
// | 2   | TextValue, NumericValue | the value (the value rule)  |
// | 3   | DataType                | integer                     |
// | 4   | Attributes              | integer                     |
// | 5   | Min                     | double                      |
// | 6   | Max                     | double                      |
// | 7   | ParameterType           | integer                     |
// | 8   | LookupTypeCode          | quoted 255, NULL when empty |
// | 9   | ListAttribute           | quoted 255, NULL when empty |
// | 10  | Relevance               | quoted 255, NULL when empty |
// | 11  | TaskIndex               | integer                     |
//
// Rows of the reads (22 columns): ActivityParameterID, FKActivityID,
// ParameterName, DisplayName, DataType, DefaultValue (the bag's Value),
// TemplateAttributes, ParameterType, Min, Max, CreatorType,
// ExtendedAttributes, Relevance, LookupTypeCode, ListAttribute, Mapping (the
// declaration), then ActivityInstanceID, AIParameterID, TaskIndex, TextValue,
// NumericValue, Attributes (the value).
class ORVMYSQL_EXPORT ITaskParamsDP : public virtual IObject {
 public:
  // Inserts a value row; returns its new AIParameterID, or -1 when no row was
  // inserted.
  virtual int32_t Add(const FieldArray& fields) = 0;
  // Writes every position to the row; true when the row exists.
  virtual bool Update(int32_t parameter_id, const FieldArray& fields) = 0;
  // With activity_instance_id < 1, deletes the one row; otherwise every value
  // of that activity instance, all task indexes (parameter_id is then
  // ignored). Always true.
  virtual bool Delete(int32_t parameter_id, int32_t activity_instance_id) = 0;
  // True when the task holds a value row of this name (matched literally).
  virtual bool ParameterExist(const std::string& name, int32_t activity_instance_id,
                              int32_t task_index) = 0;
  // The one value row beside its declaration.
  virtual std::shared_ptr<IListIterator> GetParameterByID(int32_t parameter_id) = 0;
  // One row per declaration of the instance's activity, with the values of
  // this task index or NULLs.
  virtual std::shared_ptr<IListIterator> GetParameterForTask(int32_t activity_instance_id,
                                                             int32_t task_index) = 0;
  // Value rows beside their declarations, restricted by the caller's tail.
  virtual std::shared_ptr<IListIterator> Load(const std::string& condition) = 0;
  // One row per declaration. With activity_instance_id -1: the bag of
  // activity_id with NULL value columns. Otherwise as GetParameterForTask,
  // further restricted to activity_id unless that is -1.
  virtual std::shared_ptr<IListIterator> LoadTaskParams(int32_t activity_id,
                                                        int32_t activity_instance_id,
                                                        int32_t task_index) = 0;
};

// Property values of activity instances, tblAIPropertyData (data-source code
// 8, CAIPropertyDataDP), keyed by AIPropertyID (GetNextID with -8). A value
// row belongs to an activity instance and is matched to the declaration in
// the property bag of the instance's activity (tblActivityPropertyBag) by
// PropertyName. A property has one Value column, written as given.
//
// Field array of Add and Update (11 positions, those of the parameter values
// where the columns are the same; position 7 must be present and is not
// read):
//
// | Pos | Column               | Written as                  |
// |-----|----------------------|-----------------------------|
// | 0   | FKActivityInstanceID | integer                     |
// | 1   | PropertyName         | quoted 255                  |
// | 2   | Value                | quoted, NULL when empty     |
// | 3   | DataType             | integer                     |
// | 4   | Attributes           | integer                     |
// | 5   | Min                  | double                      |
// | 6   | Max                  | double                      |
// | 7   | not used             |                             |
// | 8   | LookupTypeCode       | quoted 255, NULL when empty |
// | 9   | ListAttribute        | quoted 255, NULL when empty |
// | 10  | Relevance            | quoted 255, NULL when empty |
//
// Rows of the reads (20 columns): ActivityPropertyID, FKActivityID,
// PropertyName, DisplayName, PropertyDescription, DataType, DefaultValue (the
// bag's Value), TemplateAttributes, Min, Max, CreatorType, ExtendedAttributes,
// Relevance, LookupTypeCode, ListAttribute, Mapping (the declaration), then
// ActivityInstanceID, AIPropertyID, Value, Attributes (the value).
class ORVMYSQL_EXPORT ITaskPropertyDP : public virtual IObject {
 public:
  // Inserts a value row; returns its new AIPropertyID, or -1 when no row was
  // inserted.
  virtual int32_t Add(const FieldArray& fields) = 0;
  // Writes every position to the row; true when the row exists.
  virtual bool Update(int32_t property_id, const FieldArray& fields) = 0;
  // With activity_instance_id < 1, deletes the one row; otherwise every value
  // of that activity instance (property_id is then ignored). Always true.
  virtual bool Delete(int32_t property_id, int32_t activity_instance_id) = 0;
  // True when the activity instance holds a value row of this name (matched
  // literally).
  virtual bool PropertyExist(const std::string& name, int32_t activity_instance_id) = 0;
  // The one value row beside its declaration.
  virtual std::shared_ptr<IListIterator> GetPropertyByID(int32_t property_id) = 0;
  // One row per declaration of the instance's activity, with the instance's
  // value or NULLs.
  virtual std::shared_ptr<IListIterator> GetPropertiesForInstance(int32_t activity_instance_id) = 0;
  // Value rows beside their declarations, restricted by the caller's tail.
  virtual std::shared_ptr<IListIterator> Load(const std::string& condition) = 0;
  // One row per declaration. With activity_instance_id -1: the bag of
  // activity_id with NULL value columns. Otherwise as
  // GetPropertiesForInstance, further restricted to activity_id unless that
  // is -1.
  virtual std::shared_ptr<IListIterator> LoadInstanceProperties(int32_t activity_id,
                                                                int32_t activity_instance_id) = 0;
};

// Case-relevant data, tblPIReleventData (data-source code 21,
// CPIReleventDataDP), keyed by PIReleventDataID (GetNextID with -21), through
// IParameterValueDP (Definitions.h); "Relevent" is the schema's spelling. A
// row is a parameter value recorded against an entity of a process instance:
// entity type 0 is the process instance itself (EntityID is its
// ProcInstanceID), any other type an activity instance (EntityID is its
// ActivityInstanceID), with the task index and the resource it was recorded
// for. The engine's routing copies rows here; Add records one directly.
//
// Field array of Add and Update (14 positions):
//
// | Pos | Column                  | Written as                  |
// |-----|-------------------------|-----------------------------|
// | 0   | EntityID                | integer                     |
// | 1   | ParameterName           | quoted 255                  |
// | 2   | TextValue, NumericValue | the value (the value rule)  |
// | 3   | DataType                | integer                     |
// | 4   | Attributes              | integer                     |
// | 5   | Min                     | double                      |
// | 6   | Max                     | double                      |
// | 7   | ParameterType           | integer                     |
// | 8   | TaskIndex               | integer                     |
// | 9   | ResourceID              | quoted 255, NULL when empty |
// | 10  | ResourceType            | quoted 255, NULL when empty |
// | 11  | ResourceName            | quoted 255, NULL when empty |
// | 12  | FKProcInstanceID        | integer                     |
// | 13  | EntityType              | integer                     |
//
// Operations of IParameterValueDP for this provider:
// - Add inserts with a new key and returns true (a Boolean Variant).
// - Update writes every position; always true.
// - Delete(id, entity_id): with entity_id < 1 the one row; otherwise every
//   row of EntityID entity_id with EntityType 1, whatever other activity
//   entity types were stored. Always true.
// - The reads return every column of the row and the ActivityName of the
//   activity the entity is an instance of. Only rows of activity instances
//   come back: a row of entity type 0, or one whose EntityID is no activity
//   instance, is stored but never read.
// - GetParameterByID(id) reads the one row; GetParameterForEntity(id) reads
//   every row of the process instance id (FKProcInstanceID), all entities.

}  // namespace orvmysql

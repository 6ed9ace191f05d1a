-- A task's parameter values and an activity instance's property values are
-- read one declaration at a time, by instance, task index and name: these
-- indexes find each value row directly instead of reading every value of the
-- instance for every declaration. Each replaces the index on its prefix.
-- Process-instance values have had their (instance, name) index from the
-- start. Safe to run again.
CREATE INDEX IF NOT EXISTS ixActivityInstanceDataTaskName
  ON tblActivityInstanceData (FKActivityInstanceID, TaskIndex, ParameterName);
DROP INDEX IF EXISTS ixActivityInstanceDataTask ON tblActivityInstanceData;

CREATE INDEX IF NOT EXISTS ixAIPropertyDataInstanceName
  ON tblAIPropertyData (FKActivityInstanceID, PropertyName);
DROP INDEX IF EXISTS ixAIPropertyDataInstance ON tblAIPropertyData;

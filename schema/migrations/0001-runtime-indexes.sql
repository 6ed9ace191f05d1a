-- Indexes for the lookups of the runtime instance providers on databases
-- created before they were part of the schema. Safe to run again.

-- A resource's work list (a filter on ResourceID).
CREATE INDEX IF NOT EXISTS ixWorkitemsResource ON tblWorkitems (ResourceID);

-- A new process instance is found by the GUID its creator gave it.
CREATE INDEX IF NOT EXISTS ixProcessInstanceGuid ON tblProcessInstance (`Guid`);

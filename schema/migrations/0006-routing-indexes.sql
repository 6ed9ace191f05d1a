-- Paths of a split are read and counted by their split and State (the open
-- paths when the engine joins): one index answers both without reading rows.
-- It replaces the index on the split alone, which is its prefix. Splits and
-- threads are read by key and by process instance through indexes that the
-- schema has had from the start.
CREATE INDEX IF NOT EXISTS ixProcPathInstanceSplitState
  ON tblProcPathInstance (FKSplitInstanceID, State);
DROP INDEX IF EXISTS ixProcPathInstanceSplit ON tblProcPathInstance;

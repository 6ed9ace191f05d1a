-- Indexes for the message lists people open all day: a recipient's inbox (by
-- RecepientID or RecepientName) and a sender's sent items. Safe to run again.

CREATE INDEX IF NOT EXISTS ixMsgReceipentRecepientID ON tblMsgReceipent (RecepientID);
CREATE INDEX IF NOT EXISTS ixMsgReceipentRecepientName ON tblMsgReceipent (RecepientName);
CREATE INDEX IF NOT EXISTS ixMessagesSender ON tblMessages (SenderID);

-- Schema of the workflow store. InnoDB, utf8mb4. Every statement can run again
-- on an existing database without failing or losing data. Keys are allocated
-- by the library from tblKeyGen, never by AUTO_INCREMENT. Long texts (notes,
-- bodies, layouts, values) are MEDIUMTEXT; texts that the library cuts to 255
-- characters are VARCHAR(255). Every column the library filters or joins on
-- has an index.

CREATE TABLE IF NOT EXISTS tblKeyGen (
  EntityTypeCode INT NOT NULL PRIMARY KEY,
  LastAllocatedKey INT NOT NULL DEFAULT 0,
  Seed INT NOT NULL DEFAULT 0,
  Increment INT NOT NULL DEFAULT 1,
  `Offset` INT NOT NULL DEFAULT 1
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblProcessDef (
  ProcessDefID INT NOT NULL PRIMARY KEY,
  ProcDefName VARCHAR(255) NULL,
  ProcdefDescription MEDIUMTEXT NULL,
  AccessLevel INT NULL,
  CreatedDate DATETIME NULL,
  ModifiedDate DATETIME NULL,
  CreatorID VARCHAR(255) NULL,
  CreatorType VARCHAR(255) NULL,
  CreatorName VARCHAR(255) NULL,
  ProcModifiedByUserID VARCHAR(255) NULL,
  ProcModifiedByUserType VARCHAR(255) NULL,
  ProcModifiedByUserName VARCHAR(255) NULL,
  Duration INT NULL,
  DurationUnit INT NULL,
  Timeout INT NULL,
  TimeoutUnit INT NULL,
  Priority INT NULL,
  ExcludeNonWorkingHours TINYINT NULL,
  AclId INT NULL,
  MajorVersion INT NULL,
  MinorVersion INT NULL,
  State INT NULL,
  LastActivityID INT NULL,
  LastSwitchID INT NULL,
  LastTransitionID INT NULL,
  ProcDefTypeMask INT NULL,
  Layout MEDIUMTEXT NULL,
  `Trigger` MEDIUMTEXT NULL,
  KEY ixProcessDefName (ProcDefName)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblActivities (
  ActivityID INT NOT NULL PRIMARY KEY,
  ActivityName VARCHAR(255) NULL,
  Description MEDIUMTEXT NULL,
  ActivityType INT NULL,
  StartTime INT NULL,
  StartTimeUnit INT NULL,
  Duration INT NULL,
  DurationUnit INT NULL,
  Timeout INT NULL,
  TimeoutUnit INT NULL,
  FKProcDefinitionID INT NULL,
  Priority INT NULL,
  Subject VARCHAR(255) NULL,
  Message MEDIUMTEXT NULL,
  ActivityProcDefID VARCHAR(255) NULL,
  ActivityTypeMask INT NULL,
  ClassID VARCHAR(255) NULL,
  KEY ixActivitiesDefName (FKProcDefinitionID, ActivityName),
  KEY ixActivitiesDefIdent (FKProcDefinitionID, ActivityProcDefID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblTransitions (
  TransitionID INT NOT NULL PRIMARY KEY,
  FKFromNodeID INT NULL,
  FromNodeType INT NULL,
  FKToNodeID INT NULL,
  ToNodeType INT NULL,
  TransitionCondition MEDIUMTEXT NULL,
  FKProcDefinitionID INT NULL,
  TransitionProcDefID VARCHAR(255) NULL,
  KEY ixTransitionsFrom (FKProcDefinitionID, FKFromNodeID, FromNodeType)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblSwitches (
  SwitchID INT NOT NULL PRIMARY KEY,
  SwitchType INT NULL,
  DisplayName VARCHAR(255) NULL,
  FKProcDefinitionID INT NULL,
  SwitchProcDefID VARCHAR(255) NULL,
  KEY ixSwitchesDefType (FKProcDefinitionID, SwitchType)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblProcessParams (
  ParameterID INT NOT NULL PRIMARY KEY,
  FKProcDefID INT NULL,
  ParameterName VARCHAR(255) NULL,
  DisplayName VARCHAR(255) NULL,
  DataType INT NULL,
  DefaultValue VARCHAR(255) NULL,
  `Attributes` INT NULL,
  ParameterType INT NULL,
  `Min` DOUBLE NULL,
  `Max` DOUBLE NULL,
  CreatorType INT NULL,
  ExtendedAttributes MEDIUMTEXT NULL,
  Relevance VARCHAR(255) NULL,
  LookupTypeCode VARCHAR(255) NULL,
  ListAttribute VARCHAR(255) NULL,
  KEY ixProcessParamsDefName (FKProcDefID, ParameterName),
  KEY ixProcessParamsName (ParameterName)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblActivityPropertyBag (
  ActivityPropertyID INT NOT NULL PRIMARY KEY,
  FKActivityID INT NULL,
  PropertyName VARCHAR(255) NULL,
  DisplayName VARCHAR(255) NULL,
  PropertyDescription VARCHAR(255) NULL,
  `Value` MEDIUMTEXT NULL,
  DataType INT NULL,
  `Attributes` INT NULL,
  `Min` DOUBLE NULL,
  `Max` DOUBLE NULL,
  ExtendedAttributes MEDIUMTEXT NULL,
  CreatorType INT NULL,
  Mapping VARCHAR(255) NULL,
  relevance VARCHAR(255) NULL,
  LookupTypeCode VARCHAR(255) NULL,
  ListAttribute VARCHAR(255) NULL,
  KEY ixActivityPropertyBagActivity (FKActivityID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblActivityParamBag (
  ActivityParameterID INT NOT NULL PRIMARY KEY,
  FKActivityID INT NULL,
  ParameterName VARCHAR(255) NULL,
  DisplayName VARCHAR(255) NULL,
  `Value` MEDIUMTEXT NULL,
  DataType INT NULL,
  `Attributes` INT NULL,
  `Min` DOUBLE NULL,
  `Max` DOUBLE NULL,
  ParameterType INT NULL,
  ExtendedAttributes MEDIUMTEXT NULL,
  CreatorType INT NULL,
  Mapping VARCHAR(255) NULL,
  Relevance VARCHAR(255) NULL,
  LookupTypeCode VARCHAR(255) NULL,
  ListAttribute VARCHAR(255) NULL,
  KEY ixActivityParamBagActivity (FKActivityID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblProcessInstance (
  ProcInstanceID INT NOT NULL PRIMARY KEY,
  ProcInstanceName VARCHAR(255) NULL,
  FKProcDefID INT NULL,
  ScheduledStartTime DATETIME NULL,
  ScheduledEndTime DATETIME NULL,
  ScheduledTimeOut DATETIME NULL,
  CreatorID VARCHAR(255) NULL,
  CreatorType VARCHAR(255) NULL,
  CreatorName VARCHAR(255) NULL,
  State INT NULL,
  Priority INT NULL,
  `Guid` VARCHAR(255) NULL,
  FKParentProcInstanceID INT NULL,
  TreeID VARCHAR(255) NULL,
  CreatedOn DATETIME NULL,
  StartedOn DATETIME NULL,
  FinishedOn DATETIME NULL,
  Note MEDIUMTEXT NULL,
  KEY ixProcessInstanceDef (FKProcDefID),
  KEY ixProcessInstanceTree (TreeID),
  KEY ixProcessInstanceParent (FKParentProcInstanceID),
  KEY ixProcessInstanceGuid (`Guid`)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblActivityInstance (
  ActivityInstanceID INT NOT NULL PRIMARY KEY,
  State INT NULL,
  ScheduledStartTime DATETIME NULL,
  ScheduledTimeout DATETIME NULL,
  ScheduledEndTime DATETIME NULL,
  DisplayName VARCHAR(255) NULL,
  FKActivityID INT NULL,
  FKProcInstanceID INT NULL,
  ActivityType INT NULL,
  `Min` VARCHAR(255) NULL,
  `Max` VARCHAR(255) NULL,
  Threshold VARCHAR(255) NULL,
  ActivityInstanceIndex VARCHAR(255) NULL,
  ActivityHandlerType INT NULL,
  `Trigger` INT NULL,
  ExtendedAttributes MEDIUMTEXT NULL,
  ResourceSet MEDIUMTEXT NULL,
  FKSplitInstanceID INT NULL,
  FKPathInstanceID INT NULL,
  FKThreadInstanceID VARCHAR(255) NULL,
  FKActivityProcDefID VARCHAR(255) NULL,
  CreatedOn DATETIME NULL,
  StartedOn DATETIME NULL,
  FinishedOn DATETIME NULL,
  Priority INT NULL,
  ActivityNote MEDIUMTEXT NULL,
  KEY ixActivityInstanceProcess (FKProcInstanceID),
  KEY ixActivityInstanceActivity (FKActivityID),
  KEY ixActivityInstanceSplit (FKSplitInstanceID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblWorkitems (
  WorkitemID INT NOT NULL PRIMARY KEY,
  ResourceID VARCHAR(255) NULL,
  ResourceType VARCHAR(255) NULL,
  ResourceName VARCHAR(255) NULL,
  Subject VARCHAR(255) NULL,
  Note MEDIUMTEXT NULL,
  State INT NULL,
  FKActivityInstanceID INT NULL,
  WorkitemActivityInstanceType INT NULL,
  FKProcInstanceID INT NULL,
  AcknowledgedOn DATETIME NULL,
  FinishedOn DATETIME NULL,
  CreatedOn DATETIME NULL,
  StartedOn DATETIME NULL,
  TaskIndex INT NULL,
  ScheduledStartTime DATETIME NULL,
  ScheduledEndTime DATETIME NULL,
  ScheduledTimeout DATETIME NULL,
  Priority INT NULL,
  DisplayMask INT NULL,
  KEY ixWorkitemsProcess (FKProcInstanceID),
  KEY ixWorkitemsActivityInstance (FKActivityInstanceID, TaskIndex),
  KEY ixWorkitemsResource (ResourceID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblProcInstanceData (
  ProcInstanceDataID INT NOT NULL PRIMARY KEY,
  FKProcInstanceID INT NULL,
  ParameterName VARCHAR(255) NULL,
  TextValue MEDIUMTEXT NULL,
  NumericValue DOUBLE NULL,
  DataType INT NULL,
  `Attributes` INT NULL,
  `Min` DOUBLE NULL,
  `Max` DOUBLE NULL,
  ParameterType INT NULL,
  LookupTypeCode VARCHAR(255) NULL,
  ListAttribute VARCHAR(255) NULL,
  Relevance VARCHAR(255) NULL,
  KEY ixProcInstanceDataProcess (FKProcInstanceID, ParameterName),
  KEY ixProcInstanceDataName (ParameterName)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblActivityInstanceData (
  AIParameterID INT NOT NULL PRIMARY KEY,
  FKActivityInstanceID INT NULL,
  ParameterName VARCHAR(255) NULL,
  TextValue MEDIUMTEXT NULL,
  NumericValue DOUBLE NULL,
  DataType INT NULL,
  `Attributes` INT NULL,
  `Min` DOUBLE NULL,
  `Max` DOUBLE NULL,
  ParameterType INT NULL,
  TaskIndex INT NULL,
  LookupTypeCode VARCHAR(255) NULL,
  ListAttribute VARCHAR(255) NULL,
  Relevance VARCHAR(255) NULL,
  KEY ixActivityInstanceDataTaskName (FKActivityInstanceID, TaskIndex, ParameterName)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblAIPropertyData (
  AIPropertyID INT NOT NULL PRIMARY KEY,
  FKActivityInstanceID INT NULL,
  PropertyName VARCHAR(255) NULL,
  `Value` MEDIUMTEXT NULL,
  DataType INT NULL,
  `Attributes` INT NULL,
  `Min` DOUBLE NULL,
  `Max` DOUBLE NULL,
  LookupTypeCode VARCHAR(255) NULL,
  ListAttribute VARCHAR(255) NULL,
  Relevance VARCHAR(255) NULL,
  KEY ixAIPropertyDataInstanceName (FKActivityInstanceID, PropertyName)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblPIReleventData (
  PIReleventDataID INT NOT NULL PRIMARY KEY,
  FKProcInstanceID INT NULL,
  ParameterName VARCHAR(255) NULL,
  TextValue MEDIUMTEXT NULL,
  NumericValue DOUBLE NULL,
  DataType INT NULL,
  `Attributes` INT NULL,
  `Min` DOUBLE NULL,
  `Max` DOUBLE NULL,
  ParameterType INT NULL,
  EntityID INT NULL,
  EntityType INT NULL,
  TaskIndex INT NULL,
  ResourceID VARCHAR(255) NULL,
  ResourceType VARCHAR(255) NULL,
  ResourceName VARCHAR(255) NULL,
  LookupTypeCode VARCHAR(255) NULL,
  ListAttribute VARCHAR(255) NULL,
  Relevance VARCHAR(255) NULL,
  KEY ixPIReleventDataProcess (FKProcInstanceID),
  KEY ixPIReleventDataEntity (EntityID, EntityType)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblProcSplitInstance (
  SplitInstanceID INT NOT NULL PRIMARY KEY,
  ParentID INT NULL,
  FKThreadInstanceID VARCHAR(255) NULL,
  FKPathInstanceID INT NULL,
  FKProcInstanceID INT NULL,
  State INT NULL,
  SplitType INT NULL,
  KEY ixProcSplitInstanceProcess (FKProcInstanceID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblProcPathInstance (
  PathID INT NOT NULL PRIMARY KEY,
  FKSplitInstanceID INT NULL,
  FKProcInstanceID INT NULL,
  State INT NULL,
  KEY ixProcPathInstanceProcess (FKProcInstanceID),
  KEY ixProcPathInstanceSplitState (FKSplitInstanceID, State)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblProcThreadInstance (
  ThreadID VARCHAR(255) NOT NULL PRIMARY KEY,
  FKProcInstanceID INT NULL,
  State INT NULL,
  KEY ixProcThreadInstanceProcess (FKProcInstanceID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblMessages (
  MessageID INT NOT NULL PRIMARY KEY,
  SenderID VARCHAR(255) NULL,
  Subject VARCHAR(255) NULL,
  Message MEDIUMTEXT NULL,
  SenderType VARCHAR(255) NULL,
  SenderName VARCHAR(255) NULL,
  SenderEmailID VARCHAR(255) NULL,
  MessageType INT NULL,
  MessageToken VARCHAR(255) NULL,
  MessageDate DATETIME NULL,
  HasAttachments TINYINT NULL,
  Direction INT NULL,
  Priority INT NULL,
  State INT NULL,
  KEY ixMessagesToken (MessageToken, MessageDate, Direction),
  KEY ixMessagesSender (SenderID)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblMsgReceipent (
  PartyID INT NOT NULL PRIMARY KEY,
  FKMessageID INT NULL,
  RecepientID VARCHAR(255) NULL,
  RecepientType VARCHAR(255) NULL,
  RecepientName VARCHAR(255) NULL,
  RecepientEmailID VARCHAR(255) NULL,
  DisplayMask INT NULL,
  KEY ixMsgReceipentMessage (FKMessageID, RecepientName),
  KEY ixMsgReceipentRecepientID (RecepientID),
  KEY ixMsgReceipentRecepientName (RecepientName)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

CREATE TABLE IF NOT EXISTS tblAttachments (
  AttachmentID INT NOT NULL PRIMARY KEY,
  FKMessageID INT NULL,
  AttachmentNumber INT NULL,
  MimeType VARCHAR(255) NULL,
  FileName VARCHAR(255) NULL,
  Body LONGTEXT NULL,
  KEY ixAttachmentsMessage (FKMessageID, AttachmentNumber)
) ENGINE=InnoDB DEFAULT CHARSET=utf8mb4 COLLATE=utf8mb4_unicode_ci;

-- One key row per entity type code: the first key handed out is Seed + Offset.
-- INSERT IGNORE keeps the counters of rows that exist already.
INSERT IGNORE INTO tblKeyGen (EntityTypeCode, LastAllocatedKey, Seed, Increment, `Offset`) VALUES
  (-4, 0, 0, 1, 1),
  (-5, 0, 0, 1, 1),
  (-6, 0, 0, 1, 1),
  (-7, 0, 0, 1, 1),
  (-8, 0, 0, 1, 1),
  (-9, 0, 0, 1, 1),
  (-10, 0, 0, 1, 1),
  (-11, 0, 0, 1, 1),
  (-14, 0, 0, 1, 1),
  (-15, 0, 0, 1, 1),
  (-16, 0, 0, 1, 1),
  (-17, 0, 0, 1, 1),
  (-18, 0, 0, 1, 1),
  (-19, 0, 0, 1, 1),
  (-20, 0, 0, 1, 1),
  (-21, 0, 0, 1, 1),
  (-22, 0, 0, 1, 1),
  (-23, 0, 0, 1, 1),
  (-24, 0, 0, 1, 1),
  (-25, 0, 0, 1, 1);

<?xml version="1.0" encoding="UTF-8"?>
<!-- orvmysql display names, English. The names below are looked up by
     display-names.xsl, which holds the templates: translate the element texts
     and leave the name and value attributes as they are. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:exsl="http://exslt.org/common"
                xmlns:n="urn:orvmysql:display-names" exclude-result-prefixes="exsl n">
  <xsl:import href="display-names.xsl"/>
  <xsl:variable name="names" select="exsl:node-set($table)"/>

  <xsl:variable name="table">
    <!-- Attributes of the work-item, process-instance, activity-instance and message filters. -->
    <n:attribute name="ProcInstanceID">Process instance ID</n:attribute>
    <n:attribute name="FinishedOn">Finished on</n:attribute>
    <n:attribute name="CreatedOn">Created on</n:attribute>
    <n:attribute name="StartedOn">Started on</n:attribute>
    <n:attribute name="ScheduledStartTime">Scheduled start</n:attribute>
    <n:attribute name="ScheduledEndTime">Scheduled end</n:attribute>
    <n:attribute name="ScheduledTimeout">Scheduled timeout</n:attribute>
    <n:attribute name="State">State</n:attribute>
    <n:attribute name="Priority">Priority</n:attribute>
    <n:attribute name="Note">Note</n:attribute>
    <n:attribute name="ProcInstanceName">Process instance name</n:attribute>
    <n:attribute name="CreatorID">Creator ID</n:attribute>
    <n:attribute name="CreatorType">Creator type</n:attribute>
    <n:attribute name="CreatorName">Creator name</n:attribute>
    <n:attribute name="GUID">GUID</n:attribute>
    <n:attribute name="TreeID">Process tree ID</n:attribute>
    <n:attribute name="FKProcDefID">Process definition</n:attribute>
    <n:attribute name="FKParentProcInstanceID">Parent process instance</n:attribute>
    <n:attribute name="ActivityInstanceID">Activity instance ID</n:attribute>
    <n:attribute name="DisplayName">Display name</n:attribute>
    <n:attribute name="Threshold">Threshold</n:attribute>
    <n:attribute name="ActivityInstanceIndex">Activity instance index</n:attribute>
    <n:attribute name="FKThreadInstanceID">Thread instance</n:attribute>
    <n:attribute name="FKActivityProcDefID">Activity definition ID</n:attribute>
    <n:attribute name="FKActivityID">Activity</n:attribute>
    <n:attribute name="FKProcInstanceID">Process instance</n:attribute>
    <n:attribute name="FKPathInstanceID">Path instance</n:attribute>
    <n:attribute name="FKSplitInstanceID">Split instance</n:attribute>
    <n:attribute name="ActivityType">Activity type</n:attribute>
    <n:attribute name="ActivityHandlerType">Activity handler type</n:attribute>
    <n:attribute name="Trigger">Trigger</n:attribute>
    <n:attribute name="ExtendedAttributes">Extended attributes</n:attribute>
    <n:attribute name="ResourceSet">Resource set</n:attribute>
    <n:attribute name="ActivityNote">Activity note</n:attribute>
    <n:attribute name="ActivityName">Activity name</n:attribute>
    <n:attribute name="MessageID">Message ID</n:attribute>
    <n:attribute name="Subject">Subject</n:attribute>
    <n:attribute name="Message">Message</n:attribute>
    <n:attribute name="SenderID">Sender ID</n:attribute>
    <n:attribute name="SenderType">Sender type</n:attribute>
    <n:attribute name="SenderName">Sender name</n:attribute>
    <n:attribute name="SenderEmailID">Sender e-mail</n:attribute>
    <n:attribute name="MessageToken">Message token</n:attribute>
    <n:attribute name="MessageType">Message type</n:attribute>
    <n:attribute name="MessageDate">Message date</n:attribute>
    <n:attribute name="HasAttachments">Has attachments</n:attribute>
    <n:attribute name="Direction">Direction</n:attribute>
    <n:attribute name="PartyID">Recipient entry ID</n:attribute>
    <n:attribute name="RecepientID">Recipient ID</n:attribute>
    <n:attribute name="RecepientType">Recipient type</n:attribute>
    <n:attribute name="RecepientName">Recipient name</n:attribute>
    <n:attribute name="RecepientEmailID">Recipient e-mail</n:attribute>
    <n:attribute name="FKMessageID">Message</n:attribute>
    <n:attribute name="DisplayMask">Display mask</n:attribute>
    <n:attribute name="WorkitemID">Work item ID</n:attribute>
    <n:attribute name="ResourceID">Resource ID</n:attribute>
    <n:attribute name="ResourceType">Resource type</n:attribute>
    <n:attribute name="ResourceName">Resource name</n:attribute>
    <n:attribute name="FKActivityInstanceID">Activity instance</n:attribute>
    <n:attribute name="WorkitemActivityInstanceType">Activity instance type</n:attribute>
    <n:attribute name="AcknowledgedOn">Acknowledged on</n:attribute>
    <n:attribute name="TaskIndex">Task index</n:attribute>
    <!-- Condition operators, by name and by number. -->
    <n:operator name="dcoEqualto" value="1">equals</n:operator>
    <n:operator name="dconotequalto" value="2">not equal to</n:operator>
    <n:operator name="dcoLessThan" value="3">less than</n:operator>
    <n:operator name="dcoGreaterThan" value="4">greater than</n:operator>
    <n:operator name="dcoLessThanEqualTo" value="5">less than equal to</n:operator>
    <n:operator name="dcoGreaterThanEqualTo" value="6">greater than equal to</n:operator>
    <n:operator name="dcoBeginsWith" value="7">begins with</n:operator>
    <n:operator name="dcoEndsWith" value="8">ends with</n:operator>
    <n:operator name="dcoContains" value="9">contains</n:operator>
    <n:operator name="dcoDoesNotBeginWith" value="10">does not begin with</n:operator>
    <n:operator name="dcoDoesNotEndWith" value="11">does not end with</n:operator>
    <n:operator name="dcoDoesNotContain" value="12">does not contain</n:operator>
    <n:operator name="dcoContainsSimilar" value="13">contains similar</n:operator>
    <n:operator name="dcoNull" value="14">null</n:operator>
    <n:operator name="dcoNotNull" value="15">not null</n:operator>
    <n:operator name="dcoYesterday" value="16">yesterday</n:operator>
    <n:operator name="dcoToday" value="17">today</n:operator>
    <n:operator name="dcoTomorrow" value="18">tomorrow</n:operator>
    <n:operator name="dcoNextSevenDays" value="19">next seven days</n:operator>
    <n:operator name="dcoLastSevenDays" value="20">last seven days</n:operator>
    <n:operator name="dcoNextWeek" value="21">next week</n:operator>
    <n:operator name="dcoLastWeek" value="22">last week</n:operator>
    <n:operator name="dcoThisWeek" value="23">this week</n:operator>
    <n:operator name="dcoThisMonth" value="24">this month</n:operator>
    <n:operator name="dcoLastMonth" value="25">last month</n:operator>
    <n:operator name="dcoNextMonth" value="26">next month</n:operator>
    <n:operator name="dcoThisYear" value="27">this year</n:operator>
    <n:operator name="dcoLastYear" value="28">last year</n:operator>
    <n:operator name="dcoNextYear" value="29">next year</n:operator>
    <n:operator name="dcoOn" value="30">on</n:operator>
    <n:operator name="dcoOnOrBefore" value="31">on or before</n:operator>
    <n:operator name="dcoOnOrAfter" value="32">on or after</n:operator>
    <n:operator name="dcoLastXHours" value="33">last X hours</n:operator>
    <n:operator name="dcoNextXHours" value="34">next X hours</n:operator>
    <n:operator name="dcoLastXDays" value="35">last X days</n:operator>
    <n:operator name="dcoNextXDays" value="36">next X days</n:operator>
    <n:operator name="dcoLastXWeeks" value="37">last X weeks</n:operator>
    <n:operator name="dcoNextXWeeks" value="38">next X weeks</n:operator>
    <n:operator name="dcoLastXMonths" value="39">last X months</n:operator>
    <n:operator name="dcoNextXMonths" value="40">next X months</n:operator>
    <n:operator name="dcoLastXYears" value="41">last X years</n:operator>
    <n:operator name="dcoNextXYears" value="42">next X years</n:operator>
    <n:operator name="dcoBefore" value="43">before</n:operator>
    <n:operator name="dcoAfter" value="44">after</n:operator>
    <n:operator name="dcoIn" value="45">in</n:operator>
    <!-- Logical operators of condition expressions. -->
    <n:logical name="dloAnd" value="1">and</n:logical>
    <n:logical name="dloOr" value="2">or</n:logical>
    <n:logical name="dloNot" value="3">not</n:logical>
    <!-- Sort orders. -->
    <n:sort name="dsAscending" value="0">ascending</n:sort>
    <n:sort name="dsDescending" value="1">descending</n:sort>
    <!-- State words; a paused state is written as its base word, the separator and "paused". -->
    <n:state name="open">open</n:state>
    <n:state name="closed">closed</n:state>
    <n:state name="completed">completed</n:state>
    <n:state name="terminated">terminated</n:state>
    <n:state name="skipped">skipped</n:state>
    <n:state name="paused">paused</n:state>
    <n:separator>, </n:separator>
  </xsl:variable>
</xsl:stylesheet>

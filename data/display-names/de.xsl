<?xml version="1.0" encoding="UTF-8"?>
<!-- orvmysql display names, German. The names below are looked up by
     display-names.xsl, which holds the templates: translate the element texts
     and leave the name and value attributes as they are. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:exsl="http://exslt.org/common"
                xmlns:n="urn:orvmysql:display-names" exclude-result-prefixes="exsl n">
  <xsl:import href="display-names.xsl"/>
  <xsl:variable name="names" select="exsl:node-set($table)"/>

  <xsl:variable name="table">
    <!-- Attributes of the work-item, process-instance, activity-instance and message filters. -->
    <n:attribute name="ProcInstanceID">Prozessinstanz-ID</n:attribute>
    <n:attribute name="FinishedOn">Beendet am</n:attribute>
    <n:attribute name="CreatedOn">Erstellt am</n:attribute>
    <n:attribute name="StartedOn">Gestartet am</n:attribute>
    <n:attribute name="ScheduledStartTime">Geplanter Beginn</n:attribute>
    <n:attribute name="ScheduledEndTime">Geplantes Ende</n:attribute>
    <n:attribute name="ScheduledTimeout">Geplante Zeitüberschreitung</n:attribute>
    <n:attribute name="State">Status</n:attribute>
    <n:attribute name="Priority">Priorität</n:attribute>
    <n:attribute name="Note">Notiz</n:attribute>
    <n:attribute name="ProcInstanceName">Name der Prozessinstanz</n:attribute>
    <n:attribute name="CreatorID">Ersteller-ID</n:attribute>
    <n:attribute name="CreatorType">Erstellertyp</n:attribute>
    <n:attribute name="CreatorName">Name des Erstellers</n:attribute>
    <n:attribute name="GUID">GUID</n:attribute>
    <n:attribute name="TreeID">Prozessbaum-ID</n:attribute>
    <n:attribute name="FKProcDefID">Prozessdefinition</n:attribute>
    <n:attribute name="FKParentProcInstanceID">Übergeordnete Prozessinstanz</n:attribute>
    <n:attribute name="ActivityInstanceID">Aktivitätsinstanz-ID</n:attribute>
    <n:attribute name="DisplayName">Anzeigename</n:attribute>
    <n:attribute name="Threshold">Schwellenwert</n:attribute>
    <n:attribute name="ActivityInstanceIndex">Index der Aktivitätsinstanz</n:attribute>
    <n:attribute name="FKThreadInstanceID">Thread-Instanz</n:attribute>
    <n:attribute name="FKActivityProcDefID">Aktivitätsdefinitions-ID</n:attribute>
    <n:attribute name="FKActivityID">Aktivität</n:attribute>
    <n:attribute name="FKProcInstanceID">Prozessinstanz</n:attribute>
    <n:attribute name="FKPathInstanceID">Pfadinstanz</n:attribute>
    <n:attribute name="FKSplitInstanceID">Verzweigungsinstanz</n:attribute>
    <n:attribute name="ActivityType">Aktivitätstyp</n:attribute>
    <n:attribute name="ActivityHandlerType">Typ des Aktivitätshandlers</n:attribute>
    <n:attribute name="Trigger">Auslöser</n:attribute>
    <n:attribute name="ExtendedAttributes">Erweiterte Attribute</n:attribute>
    <n:attribute name="ResourceSet">Ressourcengruppe</n:attribute>
    <n:attribute name="ActivityNote">Aktivitätsnotiz</n:attribute>
    <n:attribute name="ActivityName">Aktivitätsname</n:attribute>
    <n:attribute name="MessageID">Nachrichten-ID</n:attribute>
    <n:attribute name="Subject">Betreff</n:attribute>
    <n:attribute name="Message">Nachricht</n:attribute>
    <n:attribute name="SenderID">Absender-ID</n:attribute>
    <n:attribute name="SenderType">Absendertyp</n:attribute>
    <n:attribute name="SenderName">Absendername</n:attribute>
    <n:attribute name="SenderEmailID">E-Mail des Absenders</n:attribute>
    <n:attribute name="MessageToken">Nachrichtenkennung</n:attribute>
    <n:attribute name="MessageType">Nachrichtentyp</n:attribute>
    <n:attribute name="MessageDate">Nachrichtendatum</n:attribute>
    <n:attribute name="HasAttachments">Hat Anhänge</n:attribute>
    <n:attribute name="Direction">Richtung</n:attribute>
    <n:attribute name="PartyID">Empfängereintrags-ID</n:attribute>
    <n:attribute name="RecepientID">Empfänger-ID</n:attribute>
    <n:attribute name="RecepientType">Empfängertyp</n:attribute>
    <n:attribute name="RecepientName">Empfängername</n:attribute>
    <n:attribute name="RecepientEmailID">E-Mail des Empfängers</n:attribute>
    <n:attribute name="FKMessageID">Nachricht</n:attribute>
    <n:attribute name="DisplayMask">Anzeigemaske</n:attribute>
    <n:attribute name="WorkitemID">Arbeitselement-ID</n:attribute>
    <n:attribute name="ResourceID">Ressourcen-ID</n:attribute>
    <n:attribute name="ResourceType">Ressourcentyp</n:attribute>
    <n:attribute name="ResourceName">Ressourcenname</n:attribute>
    <n:attribute name="FKActivityInstanceID">Aktivitätsinstanz</n:attribute>
    <n:attribute name="WorkitemActivityInstanceType">Typ der Aktivitätsinstanz</n:attribute>
    <n:attribute name="AcknowledgedOn">Bestätigt am</n:attribute>
    <n:attribute name="TaskIndex">Aufgabenindex</n:attribute>
    <!-- Condition operators, by name and by number. -->
    <n:operator name="dcoEqualto" value="1">ist gleich</n:operator>
    <n:operator name="dconotequalto" value="2">ist ungleich</n:operator>
    <n:operator name="dcoLessThan" value="3">kleiner als</n:operator>
    <n:operator name="dcoGreaterThan" value="4">größer als</n:operator>
    <n:operator name="dcoLessThanEqualTo" value="5">kleiner oder gleich</n:operator>
    <n:operator name="dcoGreaterThanEqualTo" value="6">größer oder gleich</n:operator>
    <n:operator name="dcoBeginsWith" value="7">beginnt mit</n:operator>
    <n:operator name="dcoEndsWith" value="8">endet mit</n:operator>
    <n:operator name="dcoContains" value="9">enthält</n:operator>
    <n:operator name="dcoDoesNotBeginWith" value="10">beginnt nicht mit</n:operator>
    <n:operator name="dcoDoesNotEndWith" value="11">endet nicht mit</n:operator>
    <n:operator name="dcoDoesNotContain" value="12">enthält nicht</n:operator>
    <n:operator name="dcoContainsSimilar" value="13">enthält Ähnliches</n:operator>
    <n:operator name="dcoNull" value="14">ist leer</n:operator>
    <n:operator name="dcoNotNull" value="15">ist nicht leer</n:operator>
    <n:operator name="dcoYesterday" value="16">gestern</n:operator>
    <n:operator name="dcoToday" value="17">heute</n:operator>
    <n:operator name="dcoTomorrow" value="18">morgen</n:operator>
    <n:operator name="dcoNextSevenDays" value="19">nächste sieben Tage</n:operator>
    <n:operator name="dcoLastSevenDays" value="20">letzte sieben Tage</n:operator>
    <n:operator name="dcoNextWeek" value="21">nächste Woche</n:operator>
    <n:operator name="dcoLastWeek" value="22">letzte Woche</n:operator>
    <n:operator name="dcoThisWeek" value="23">diese Woche</n:operator>
    <n:operator name="dcoThisMonth" value="24">dieser Monat</n:operator>
    <n:operator name="dcoLastMonth" value="25">letzter Monat</n:operator>
    <n:operator name="dcoNextMonth" value="26">nächster Monat</n:operator>
    <n:operator name="dcoThisYear" value="27">dieses Jahr</n:operator>
    <n:operator name="dcoLastYear" value="28">letztes Jahr</n:operator>
    <n:operator name="dcoNextYear" value="29">nächstes Jahr</n:operator>
    <n:operator name="dcoOn" value="30">am</n:operator>
    <n:operator name="dcoOnOrBefore" value="31">am oder vor dem</n:operator>
    <n:operator name="dcoOnOrAfter" value="32">am oder nach dem</n:operator>
    <n:operator name="dcoLastXHours" value="33">letzte X Stunden</n:operator>
    <n:operator name="dcoNextXHours" value="34">nächste X Stunden</n:operator>
    <n:operator name="dcoLastXDays" value="35">letzte X Tage</n:operator>
    <n:operator name="dcoNextXDays" value="36">nächste X Tage</n:operator>
    <n:operator name="dcoLastXWeeks" value="37">letzte X Wochen</n:operator>
    <n:operator name="dcoNextXWeeks" value="38">nächste X Wochen</n:operator>
    <n:operator name="dcoLastXMonths" value="39">letzte X Monate</n:operator>
    <n:operator name="dcoNextXMonths" value="40">nächste X Monate</n:operator>
    <n:operator name="dcoLastXYears" value="41">letzte X Jahre</n:operator>
    <n:operator name="dcoNextXYears" value="42">nächste X Jahre</n:operator>
    <n:operator name="dcoBefore" value="43">vor</n:operator>
    <n:operator name="dcoAfter" value="44">nach</n:operator>
    <n:operator name="dcoIn" value="45">in</n:operator>
    <!-- Logical operators of condition expressions. -->
    <n:logical name="dloAnd" value="1">und</n:logical>
    <n:logical name="dloOr" value="2">oder</n:logical>
    <n:logical name="dloNot" value="3">nicht</n:logical>
    <!-- Sort orders. -->
    <n:sort name="dsAscending" value="0">aufsteigend</n:sort>
    <n:sort name="dsDescending" value="1">absteigend</n:sort>
    <!-- State words; a paused state is written as its base word, the separator and "paused". -->
    <n:state name="open">offen</n:state>
    <n:state name="closed">geschlossen</n:state>
    <n:state name="completed">abgeschlossen</n:state>
    <n:state name="terminated">abgebrochen</n:state>
    <n:state name="skipped">übersprungen</n:state>
    <n:state name="paused">angehalten</n:state>
    <n:separator>, </n:separator>
  </xsl:variable>
</xsl:stylesheet>

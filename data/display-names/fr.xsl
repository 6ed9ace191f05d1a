<?xml version="1.0" encoding="UTF-8"?>
<!-- orvmysql display names, French. The names below are looked up by
     display-names.xsl, which holds the templates: translate the element texts
     and leave the name and value attributes as they are. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:exsl="http://exslt.org/common"
                xmlns:n="urn:orvmysql:display-names" exclude-result-prefixes="exsl n">
  <xsl:import href="display-names.xsl"/>
  <xsl:variable name="names" select="exsl:node-set($table)"/>

  <xsl:variable name="table">
    <!-- Attributes of the work-item, process-instance, activity-instance and message filters. -->
    <n:attribute name="ProcInstanceID">ID de l'instance de processus</n:attribute>
    <n:attribute name="FinishedOn">Terminé le</n:attribute>
    <n:attribute name="CreatedOn">Créé le</n:attribute>
    <n:attribute name="StartedOn">Démarré le</n:attribute>
    <n:attribute name="ScheduledStartTime">Début prévu</n:attribute>
    <n:attribute name="ScheduledEndTime">Fin prévue</n:attribute>
    <n:attribute name="ScheduledTimeout">Expiration prévue</n:attribute>
    <n:attribute name="State">État</n:attribute>
    <n:attribute name="Priority">Priorité</n:attribute>
    <n:attribute name="Note">Note</n:attribute>
    <n:attribute name="ProcInstanceName">Nom de l'instance de processus</n:attribute>
    <n:attribute name="CreatorID">ID du créateur</n:attribute>
    <n:attribute name="CreatorType">Type de créateur</n:attribute>
    <n:attribute name="CreatorName">Nom du créateur</n:attribute>
    <n:attribute name="GUID">GUID</n:attribute>
    <n:attribute name="TreeID">ID de l'arborescence de processus</n:attribute>
    <n:attribute name="FKProcDefID">Définition de processus</n:attribute>
    <n:attribute name="FKParentProcInstanceID">Instance de processus parente</n:attribute>
    <n:attribute name="ActivityInstanceID">ID de l'instance d'activité</n:attribute>
    <n:attribute name="DisplayName">Nom affiché</n:attribute>
    <n:attribute name="Threshold">Seuil</n:attribute>
    <n:attribute name="ActivityInstanceIndex">Index de l'instance d'activité</n:attribute>
    <n:attribute name="FKThreadInstanceID">Instance de fil</n:attribute>
    <n:attribute name="FKActivityProcDefID">ID de définition de l'activité</n:attribute>
    <n:attribute name="FKActivityID">Activité</n:attribute>
    <n:attribute name="FKProcInstanceID">Instance de processus</n:attribute>
    <n:attribute name="FKPathInstanceID">Instance de chemin</n:attribute>
    <n:attribute name="FKSplitInstanceID">Instance de division</n:attribute>
    <n:attribute name="ActivityType">Type d'activité</n:attribute>
    <n:attribute name="ActivityHandlerType">Type de gestionnaire d'activité</n:attribute>
    <n:attribute name="Trigger">Déclencheur</n:attribute>
    <n:attribute name="ExtendedAttributes">Attributs étendus</n:attribute>
    <n:attribute name="ResourceSet">Ensemble de ressources</n:attribute>
    <n:attribute name="ActivityNote">Note d'activité</n:attribute>
    <n:attribute name="ActivityName">Nom de l'activité</n:attribute>
    <n:attribute name="MessageID">ID du message</n:attribute>
    <n:attribute name="Subject">Objet</n:attribute>
    <n:attribute name="Message">Message</n:attribute>
    <n:attribute name="SenderID">ID de l'expéditeur</n:attribute>
    <n:attribute name="SenderType">Type d'expéditeur</n:attribute>
    <n:attribute name="SenderName">Nom de l'expéditeur</n:attribute>
    <n:attribute name="SenderEmailID">Courriel de l'expéditeur</n:attribute>
    <n:attribute name="MessageToken">Jeton du message</n:attribute>
    <n:attribute name="MessageType">Type de message</n:attribute>
    <n:attribute name="MessageDate">Date du message</n:attribute>
    <n:attribute name="HasAttachments">Avec pièces jointes</n:attribute>
    <n:attribute name="Direction">Sens</n:attribute>
    <n:attribute name="PartyID">ID de l'entrée du destinataire</n:attribute>
    <n:attribute name="RecepientID">ID du destinataire</n:attribute>
    <n:attribute name="RecepientType">Type de destinataire</n:attribute>
    <n:attribute name="RecepientName">Nom du destinataire</n:attribute>
    <n:attribute name="RecepientEmailID">Courriel du destinataire</n:attribute>
    <n:attribute name="FKMessageID">Message</n:attribute>
    <n:attribute name="DisplayMask">Masque d'affichage</n:attribute>
    <n:attribute name="WorkitemID">ID de l'élément de travail</n:attribute>
    <n:attribute name="ResourceID">ID de la ressource</n:attribute>
    <n:attribute name="ResourceType">Type de ressource</n:attribute>
    <n:attribute name="ResourceName">Nom de la ressource</n:attribute>
    <n:attribute name="FKActivityInstanceID">Instance d'activité</n:attribute>
    <n:attribute name="WorkitemActivityInstanceType">Type d'instance d'activité</n:attribute>
    <n:attribute name="AcknowledgedOn">Accusé de réception le</n:attribute>
    <n:attribute name="TaskIndex">Index de la tâche</n:attribute>
    <!-- Condition operators, by name and by number. -->
    <n:operator name="dcoEqualto" value="1">est égal à</n:operator>
    <n:operator name="dconotequalto" value="2">est différent de</n:operator>
    <n:operator name="dcoLessThan" value="3">inférieur à</n:operator>
    <n:operator name="dcoGreaterThan" value="4">supérieur à</n:operator>
    <n:operator name="dcoLessThanEqualTo" value="5">inférieur ou égal à</n:operator>
    <n:operator name="dcoGreaterThanEqualTo" value="6">supérieur ou égal à</n:operator>
    <n:operator name="dcoBeginsWith" value="7">commence par</n:operator>
    <n:operator name="dcoEndsWith" value="8">se termine par</n:operator>
    <n:operator name="dcoContains" value="9">contient</n:operator>
    <n:operator name="dcoDoesNotBeginWith" value="10">ne commence pas par</n:operator>
    <n:operator name="dcoDoesNotEndWith" value="11">ne se termine pas par</n:operator>
    <n:operator name="dcoDoesNotContain" value="12">ne contient pas</n:operator>
    <n:operator name="dcoContainsSimilar" value="13">contient un texte similaire</n:operator>
    <n:operator name="dcoNull" value="14">est vide</n:operator>
    <n:operator name="dcoNotNull" value="15">n'est pas vide</n:operator>
    <n:operator name="dcoYesterday" value="16">hier</n:operator>
    <n:operator name="dcoToday" value="17">aujourd'hui</n:operator>
    <n:operator name="dcoTomorrow" value="18">demain</n:operator>
    <n:operator name="dcoNextSevenDays" value="19">sept prochains jours</n:operator>
    <n:operator name="dcoLastSevenDays" value="20">sept derniers jours</n:operator>
    <n:operator name="dcoNextWeek" value="21">semaine prochaine</n:operator>
    <n:operator name="dcoLastWeek" value="22">semaine dernière</n:operator>
    <n:operator name="dcoThisWeek" value="23">cette semaine</n:operator>
    <n:operator name="dcoThisMonth" value="24">ce mois-ci</n:operator>
    <n:operator name="dcoLastMonth" value="25">mois dernier</n:operator>
    <n:operator name="dcoNextMonth" value="26">mois prochain</n:operator>
    <n:operator name="dcoThisYear" value="27">cette année</n:operator>
    <n:operator name="dcoLastYear" value="28">année dernière</n:operator>
    <n:operator name="dcoNextYear" value="29">année prochaine</n:operator>
    <n:operator name="dcoOn" value="30">le</n:operator>
    <n:operator name="dcoOnOrBefore" value="31">le ou avant le</n:operator>
    <n:operator name="dcoOnOrAfter" value="32">le ou après le</n:operator>
    <n:operator name="dcoLastXHours" value="33">X dernières heures</n:operator>
    <n:operator name="dcoNextXHours" value="34">X prochaines heures</n:operator>
    <n:operator name="dcoLastXDays" value="35">X derniers jours</n:operator>
    <n:operator name="dcoNextXDays" value="36">X prochains jours</n:operator>
    <n:operator name="dcoLastXWeeks" value="37">X dernières semaines</n:operator>
    <n:operator name="dcoNextXWeeks" value="38">X prochaines semaines</n:operator>
    <n:operator name="dcoLastXMonths" value="39">X derniers mois</n:operator>
    <n:operator name="dcoNextXMonths" value="40">X prochains mois</n:operator>
    <n:operator name="dcoLastXYears" value="41">X dernières années</n:operator>
    <n:operator name="dcoNextXYears" value="42">X prochaines années</n:operator>
    <n:operator name="dcoBefore" value="43">avant</n:operator>
    <n:operator name="dcoAfter" value="44">après</n:operator>
    <n:operator name="dcoIn" value="45">dans</n:operator>
    <!-- Logical operators of condition expressions. -->
    <n:logical name="dloAnd" value="1">et</n:logical>
    <n:logical name="dloOr" value="2">ou</n:logical>
    <n:logical name="dloNot" value="3">non</n:logical>
    <!-- Sort orders. -->
    <n:sort name="dsAscending" value="0">croissant</n:sort>
    <n:sort name="dsDescending" value="1">décroissant</n:sort>
    <!-- State words; a paused state is written as its base word, the separator and "paused". -->
    <n:state name="open">ouvert</n:state>
    <n:state name="closed">fermé</n:state>
    <n:state name="completed">achevé</n:state>
    <n:state name="terminated">interrompu</n:state>
    <n:state name="skipped">ignoré</n:state>
    <n:state name="paused">suspendu</n:state>
    <n:separator>, </n:separator>
  </xsl:variable>
</xsl:stylesheet>

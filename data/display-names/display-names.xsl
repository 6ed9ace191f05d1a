<?xml version="1.0" encoding="UTF-8"?>
<!-- orvmysql display names: the templates every language's stylesheet imports.

     The document comes out as it went in, with display names added beside the
     names they stand for:
       attributename="State"           attributedisplayname="..."
       operator="dcoContains"          operatordisplayname="..."
       logicaloperator="dloAnd"        logicaloperatordisplayname="..."
       sortorder="dsDescending"        sortorderdisplayname="..."
       a condition on the attribute State whose value is a state word
                                       valuedisplayname="..."
       State="134217729" (any element) statedisplayname="..."
     Names match without regard to case; enumerations also by number. A name
     the language does not list gets no display name. A query document stays a
     query document: its reader ignores the added attributes.

     Each language's stylesheet sets $names to its table of names. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:n="urn:orvmysql:display-names" exclude-result-prefixes="n">
  <xsl:output method="xml" encoding="UTF-8"/>

  <xsl:variable name="names" select="/.."/>
  <xsl:variable name="upper" select="'ABCDEFGHIJKLMNOPQRSTUVWXYZ'"/>
  <xsl:variable name="lower" select="'abcdefghijklmnopqrstuvwxyz'"/>

  <xsl:template match="@*|node()">
    <xsl:copy>
      <xsl:apply-templates select="@*|node()"/>
    </xsl:copy>
  </xsl:template>

  <!-- Display names are attributes, so they are added after the element's own
       attributes and before its content. -->
  <xsl:template match="*[@*]">
    <xsl:copy>
      <xsl:apply-templates select="@*"/>
      <xsl:apply-templates select="@*" mode="display"/>
      <xsl:if test="self::condition and translate(@attributename, $upper, $lower) = 'state'">
        <xsl:call-template name="state-attribute">
          <xsl:with-param name="attribute" select="'valuedisplayname'"/>
          <xsl:with-param name="value" select="."/>
        </xsl:call-template>
      </xsl:if>
      <xsl:apply-templates select="node()"/>
    </xsl:copy>
  </xsl:template>

  <xsl:template match="@*" mode="display"/>

  <xsl:template match="@attributename" mode="display">
    <xsl:call-template name="display-attribute">
      <xsl:with-param name="attribute" select="'attributedisplayname'"/>
      <xsl:with-param name="entries" select="$names/n:attribute"/>
    </xsl:call-template>
  </xsl:template>

  <xsl:template match="@operator" mode="display">
    <xsl:call-template name="display-attribute">
      <xsl:with-param name="attribute" select="'operatordisplayname'"/>
      <xsl:with-param name="entries" select="$names/n:operator"/>
    </xsl:call-template>
  </xsl:template>

  <xsl:template match="@logicaloperator" mode="display">
    <xsl:call-template name="display-attribute">
      <xsl:with-param name="attribute" select="'logicaloperatordisplayname'"/>
      <xsl:with-param name="entries" select="$names/n:logical"/>
    </xsl:call-template>
  </xsl:template>

  <xsl:template match="@sortorder" mode="display">
    <xsl:call-template name="display-attribute">
      <xsl:with-param name="attribute" select="'sortorderdisplayname'"/>
      <xsl:with-param name="entries" select="$names/n:sort"/>
    </xsl:call-template>
  </xsl:template>

  <xsl:template match="@*[translate(name(), 'STAE', 'stae') = 'state']" mode="display">
    <xsl:call-template name="state-attribute">
      <xsl:with-param name="attribute" select="'statedisplayname'"/>
      <xsl:with-param name="value" select="."/>
    </xsl:call-template>
  </xsl:template>

  <!-- The entry whose name or number is the value of the current attribute;
       names are compared without regard to case only when none is equal. -->
  <xsl:template name="display-attribute">
    <xsl:param name="attribute"/>
    <xsl:param name="entries"/>
    <xsl:variable name="key" select="normalize-space(.)"/>
    <xsl:variable name="exact" select="$entries[@name = $key or @value = $key]"/>
    <xsl:variable name="entry" select="$exact | $entries[not($exact)]
                                       [translate(@name, $upper, $lower) = translate($key, $upper, $lower)]"/>
    <xsl:if test="$entry">
      <xsl:attribute name="{$attribute}">
        <xsl:value-of select="$entry[1]"/>
      </xsl:attribute>
    </xsl:if>
  </xsl:template>

  <!-- The state word: 0x8000000 closed (low bits 1 completed, 2 terminated,
       4 skipped), else 0x4000000 open; 0x20000000 or 0x40000000 adds
       "paused". Values that are not a whole positive number, or hold none of
       these flags, get no display name. -->
  <xsl:template name="state-attribute">
    <xsl:param name="attribute"/>
    <xsl:param name="value"/>
    <xsl:variable name="v" select="number(normalize-space($value))"/>
    <xsl:if test="$v = floor($v) and $v &gt; 0">
      <xsl:variable name="closed" select="floor($v div 134217728) mod 2 = 1"/>
      <xsl:variable name="base">
        <xsl:choose>
          <xsl:when test="$closed and $v mod 8 = 1">completed</xsl:when>
          <xsl:when test="$closed and $v mod 8 = 2">terminated</xsl:when>
          <xsl:when test="$closed and $v mod 8 = 4">skipped</xsl:when>
          <xsl:when test="$closed">closed</xsl:when>
          <xsl:when test="floor($v div 67108864) mod 2 = 1">open</xsl:when>
        </xsl:choose>
      </xsl:variable>
      <xsl:variable name="paused"
                    select="floor($v div 536870912) mod 2 = 1 or floor($v div 1073741824) mod 2 = 1"/>
      <xsl:variable name="word">
        <xsl:value-of select="$names/n:state[@name = $base]"/>
        <xsl:if test="$paused">
          <xsl:if test="string($base)">
            <xsl:value-of select="$names/n:separator"/>
          </xsl:if>
          <xsl:value-of select="$names/n:state[@name = 'paused']"/>
        </xsl:if>
      </xsl:variable>
      <xsl:if test="string($word)">
        <xsl:attribute name="{$attribute}">
          <xsl:value-of select="$word"/>
        </xsl:attribute>
      </xsl:if>
    </xsl:if>
  </xsl:template>
</xsl:stylesheet>

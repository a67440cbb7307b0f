<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name>LampControl</name>
    <message>
        <source>On</source>
        <translation>Ein</translation>
    </message>
</context>
</TS>

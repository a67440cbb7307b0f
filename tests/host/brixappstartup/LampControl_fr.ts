<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr">
<context>
    <name>LampControl</name>
    <message>
        <source>On</source>
        <translation>Marche</translation>
    </message>
</context>
</TS>

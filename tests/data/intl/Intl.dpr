program Intl;

uses
  Forms,
  Portuguese in 'Portuguese.pas' {PortugueseForm},
  Chinese in 'Chinese.pas' {ChineseForm},
  Persian in 'Persian.pas' {PersianForm},
  Glyphs in 'Glyphs.pas' {GlyphsForm};

begin
  Application.Initialize;
  Application.CreateForm(TGlyphsForm, GlyphsForm);
  Application.Run;
end.

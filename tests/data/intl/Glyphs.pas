unit Glyphs;

interface

uses
  Windows, Messages, SysUtils, Classes, Graphics, Controls, Forms, StdCtrls, Buttons, ComCtrls,
  ExtCtrls, ImgList;

type
  TGlyphsForm = class(TForm)
  end;

var
  GlyphsForm: TGlyphsForm;

implementation

{$R *.dfm}

end.

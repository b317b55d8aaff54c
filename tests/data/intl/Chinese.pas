unit Chinese;

interface

uses
  Windows, Messages, SysUtils, Classes, Graphics, Controls, Forms, StdCtrls, Buttons, ComCtrls,
  ExtCtrls, ImgList;

type
  TChineseForm = class(TForm)
  end;

var
  ChineseForm: TChineseForm;

implementation

{$R *.dfm}

end.

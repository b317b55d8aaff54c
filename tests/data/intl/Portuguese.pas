unit Portuguese;

interface

uses
  Windows, Messages, SysUtils, Classes, Graphics, Controls, Forms, StdCtrls, Buttons, ComCtrls,
  ExtCtrls, ImgList;

type
  TPortugueseForm = class(TForm)
  end;

var
  PortugueseForm: TPortugueseForm;

implementation

{$R *.dfm}

end.

unit Persian;

interface

uses
  Windows, Messages, SysUtils, Classes, Graphics, Controls, Forms, StdCtrls, Buttons, ComCtrls,
  ExtCtrls, ImgList;

type
  TPersianForm = class(TForm)
  end;

var
  PersianForm: TPersianForm;

implementation

{$R *.dfm}

end.
